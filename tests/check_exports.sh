#!/usr/bin/env bash
# Compares the functions and objects a shared library defines in its dynamic
# symbol table with the expected list (demangled names, one per line).
set -euo pipefail
lib=$1
expected=$2
actual=$(nm -D --defined-only -C "$lib" | awk '$2 ~ /^[TtWwVvBbDdRr]$/ { $1 = ""; $2 = ""; sub(/^  /, ""); print }' | sort)
want=$(grep -v '^#' "$expected" | sed '/^$/d' | sort)
if [ "$actual" != "$want" ]; then
  echo "exported symbols differ from the expected list:"
  diff <(echo "$want") <(echo "$actual") || true
  exit 1
fi
echo "exports ok: $(echo "$actual" | wc -l) symbols"
