#!/usr/bin/env bash
# Runs the fuzz target for a bounded time on the committed seeds and the
# regression inputs, growing a working corpus outside the source tree.
#   run_fuzz.sh FUZZER SECONDS WORKDIR SOURCEDIR
# A finding is written to WORKDIR/artifacts/ and fails the run; keep it under
# SOURCEDIR/regressions/ once it is fixed.
set -euo pipefail
fuzzer=$1 seconds=$2 work=$3 src=$4
mkdir -p "$work/corpus" "$work/artifacts"
"$fuzzer" "$work/corpus" "$src/corpus" "$src/regressions" \
  -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
  -artifact_prefix="$work/artifacts/" 2>"$work/log" || { tail -n 60 "$work/log"; exit 1; }
grep -E '^(stat::number_of_executed_units|stat::average_exec_per_sec|stat::new_units_added)' "$work/log"
echo "corpus: $(ls "$work/corpus" | wc -l) inputs in $work/corpus"
