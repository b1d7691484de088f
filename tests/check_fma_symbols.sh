#!/usr/bin/env bash
# The FMA copy of the planning core may define nothing outside vekta::fma: a
# function of it that the linker picked for the baseline code (an inline
# function of the standard library, say, left behind as a weak symbol) would
# run FMA/AVX instructions on processors that have neither.
#   check_fma_symbols.sh OBJECT...
# Markers the compiler and AddressSanitizer make for data (the personality
# routine's reference, the one-definition-rule indicators of globals) carry no
# instructions and are allowed.
set -euo pipefail
allowed=' (vekta::fma::|__odr_asan\._ZN5vekta3fma|DW\.ref\.__gxx_personality_v0$)'
stray=$(nm -C --defined-only "$@" | awk '$2 ~ /^[A-Zui]$/' | grep -Ev "$allowed" || true)
if [ -n "$stray" ]; then
  echo "the FMA copy defines symbols outside vekta::fma:"
  echo "$stray"
  exit 1
fi
echo "FMA copy ok: $(nm -C --defined-only "$@" | awk '$2 ~ /^[A-Zui]$/' | wc -l) symbols, all in vekta::fma"
