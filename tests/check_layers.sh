#!/usr/bin/env bash
# The folders of src/ are layers, top-down as an update flows; an include may
# point to its own layer or a lower one, never up, and step 1 and step 2 know
# nothing of each other.
#   check_layers.sh SRC_DIR
set -euo pipefail
cd "$1"
layers=(api planner engine step1 step2 numeric output check records)
rank() { for i in "${!layers[@]}"; do [ "${layers[$i]}" = "$1" ] && echo "$i" && return; done; echo -1; }
bad=0
for file in */*.h */*.cpp; do
  from=${file%%/*}
  while read -r to; do
    if [ "$(rank "$to")" -lt "$(rank "$from")" ] || [ "$from/$to" = step1/step2 ] || [ "$from/$to" = step2/step1 ]; then
      echo "$file includes $to/: up a layer"
      bad=1
    fi
  done < <(sed -n 's|^#include "\([a-z0-9_]*\)/.*|\1|p' "$file" | grep -v '^vekta$')  # the public headers
done
for folder in */; do
  [ "$(rank "${folder%/}")" -ge 0 ] || { echo "src/$folder is no layer"; bad=1; }
done
[ $bad -eq 0 ] && echo "layers ok: ${layers[*]}"
exit $bad
