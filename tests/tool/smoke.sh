#!/usr/bin/env bash
# The vekta tool as a user runs it: demo (table, CSV with the expected columns,
# a PNG), plan from a JSON file and from the command line, a bad file, the
# library's output only when asked for, a short verify and its replay, bench.
set -euo pipefail
vekta=$1
data=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

fail() { echo "FAIL: $*"; exit 1; }

# demo: the table, the files, and nothing from the library by default.
"$vekta" demo > demo.out || fail "vekta demo exited with $?"
grep -q '^position update, 6 axes' demo.out || fail "demo: no header line"
[ "$(grep -cE '^ +[0-5] ' demo.out)" -eq 6 ] || fail "demo: expected six axis rows"
grep -q '^plan check: passed$' demo.out || fail "demo: the plan check verdict is missing"
grep -q 'posUpd' demo.out && fail "demo: the library's output was not silenced"
header='t'
for i in 0 1 2 3 4 5; do header+=",pos$i,vel$i,acc$i,jerk$i"; done
[ "$(head -1 vekta-demo.csv)" = "$header" ] || fail "demo CSV header: $(head -1 vekta-demo.csv)"
rows=$(($(wc -l < vekta-demo.csv) - 1))
[ "$rows" -gt 100 ] || fail "demo CSV: only $rows rows"
awk -F, 'NR > 1 && NF != 25 { bad = 1 } END { exit bad }' vekta-demo.csv || fail "demo CSV: a row without 25 fields"
[ -s vekta-demo.png ] || fail "demo: empty or missing PNG"
[ "$(head -c 8 vekta-demo.png | od -An -tx1 | tr -d ' \n')" = "89504e470d0a1a0a" ] || fail "demo: not a PNG"

# --library-output shows the library's own lines; --save-motion writes JSON
# that plan reads back to the same table.
"$vekta" demo --library-output --no-plot --csv demo2.csv --save-motion demo.json > demo2.out
grep -q '^posUpd: 1st pt' demo2.out || fail "demo --library-output: no posUpd line"
"$vekta" plan demo.json > replan.out
diff <(grep -E '^ +[0-5] ' demo.out) <(grep -E '^ +[0-5] ' replan.out) || fail "plan of the saved demo differs"

# plan from a file and from the command line.
"$vekta" plan "$data/one_axis.json" --csv one.csv --plot one.png > one.out || fail "plan one_axis.json"
grep -q '^position update, 1 axis' one.out || fail "plan: no header line"
[ "$(head -1 one.csv)" = "t,pos0,vel0,acc0,jerk0" ] || fail "plan CSV header"
tail -1 one.csv | awk -F, '{ exit !($2 > 1.4999999 && $2 < 1.5000001 && $3 == 0 && $4 == 0) }' ||
  fail "plan: last sample not at rest on the target: $(tail -1 one.csv)"
[ -s one.png ] || fail "plan: no PNG"
"$vekta" plan --mode velocity --axis 0.1,1.5,2,0,2,5 > stop.out || fail "plan --axis"
grep -q '^velocity update, 1 axis' stop.out || fail "plan --axis: no header line"
"$vekta" plan --axis 0,0,0,1,1,4 --trace > trace.out
grep -q '^step1 start' trace.out || fail "plan --trace: no trace line"

# Bad input is refused with a message and status 2.
echo '{"mode": "position", "jerkRatio": 10, "axes": [{"target": 1, "limits": {"velocity": 1}}]}' > bad.json
set +e
"$vekta" plan bad.json > bad.out 2> bad.err
status=$?
set -e
[ "$status" -eq 2 ] || fail "bad motion: status $status"
grep -q '"acceleration" is missing' bad.err || fail "bad motion: $(cat bad.err)"

# verify: the summary, a replay, and no progress bar when stderr is no terminal.
"$vekta" verify --count 300 --seed 3 > verify.out 2> verify.err || fail "verify"
grep -q '^sweep: seed 3, 300 motions' verify.out || fail "verify: no summary"
[ ! -s verify.err ] || fail "verify: progress bar on a non-terminal: $(head -c 200 verify.err)"
"$vekta" verify --seed 3 --case 0 > replay.out || true
grep -qE '^planned .* periods;' replay.out || fail "verify --case: no outcome line"
grep -qE '^(posUpd|velUpd):' replay.out || fail "verify --case: the library's output is not shown"

# bench: a quick look.
"$vekta" bench --count 20 --repeat 2 > bench.out || fail "bench"
grep -q '^plan, 6 axes' bench.out || fail "bench: no six-axis line"
echo "vekta tool smoke test passed"
