#!/usr/bin/env bash
# The vekta tool as a user meets it, one run a row: a fragment of what it says
# (its one line on stderr when it refuses or fails, standard output otherwise)
# and the arguments; a row that reads standard input is given it with <<<, the
# others read nothing. The rows come in three groups by the exit status wanted
# (0 planned and checked, 1 refused, 2 a usage, input or output error). Then
# the files the good runs wrote.
#
#   tool_test.sh VEKTA DATA_DIR VERSION
set -uo pipefail
vekta=$1 data=$2 version=$3 failed=0
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
exec < /dev/null

fail() { failed=$((failed + 1)); echo "FAIL: $*"; }

# row FRAGMENT ARGUMENT...: one run, which must end with the status $want.
row() {
  local fragment=$1 said=out lines=0
  shift
  "$vekta" "$@" > out 2> err
  local got=$?
  [ "$want" = 0 ] || said=err lines=1
  [ "$got" = "$want" ] && grep -qF -- "$fragment" $said && [ "$(wc -l < err)" = $lines ] ||
    fail "vekta $* -> status $got (want $want, \"$fragment\"): $(head -c 300 err out)"
}

# check CONDITION: a shell condition on what the runs left, itself the message when it fails.
check() { eval "$1" || fail "$1"; }

# A motion of one axis left open after its velocity limit of 1.
open='{"jerkRatio": 10, "axes": [{"target": 1, "limits": {"velocity": 1'
conveyor=(plan --mode conveyor --axis 0,0,0,1.5,1,3 --conveyor)
# Through the library's own calls: 7 axes at 1 ms with a jerk limit each, 16
# from JSON at 10 ms, 17 (one too many).
seven=(--period 0.001) seventeen=() sixteen=
for i in {0..16}; do
  [ $i -lt 7 ] && seven+=(--axis "0,0,0,$((i + 1)).5,2,8,$((40 + 10 * i))")
  [ $i -lt 16 ] && sixteen+=$(printf '{"target": 0.%d, "maxJerk": %d, "limits": {"velocity": 1, "acceleration": 4}},' \
    $((1 + i % 5)) $((20 + 5 * i)))
  seventeen+=(--axis 0,0,0,1,1,4)
done
mkdir dir

# Good runs.
want=0
row 'plan check: passed' demo
# The library is silent unless asked.
check '! grep -q posUpd out'
row 'posUpd: 1st pt' demo --library-output --no-plot --save-motion saved.json
row 'plan check: passed' plan "$data/one_axis.json" --csv one.csv --plot one.svg --units rad
row 'velocity update, 1 axis' plan --mode velocity --axis 0.1,1.5,2,0,2,5 --plot stop.pdf
row 'position update, 6 axes' plan saved.json
row 'plan check: passed' plan --recovery --axis 0,0.3,0,0,1,4
row '   6    0.0000    7.5000    7.5000   4.080 s    2.0000 / 2          8.0000 / 8          100.000 / 100        4080' \
  plan "${seven[@]}"
row '  15    0.0000    0.1000    0.1000   0.850 s    0.1288 / 1          3.1962 / 4           95.000 / 95           85' \
  plan - --csv s16.csv --plot s16.svg <<< "{\"period\": 0.01, \"axes\": [${sixteen%,}]}"
row 'conveyor                   default' verify --recovery --count 20 --seed 2
row 'periods; ok' verify --seed 3 --case 2
row "vekta $version" --version
row 'Exit status (every subcommand): 0 planned and checked' --help

# Refused: the library's reason and the plan check's, in one line.
want=1
row 'refused the motion: vekta: failed to catch up with conveyor-1.500000+1.083333>1.600000; plan check (code 2)' \
  "${conveyor[@]}" 0.5,1.6,1
row 'the conveyor update refuses a spare below 0.002' "${conveyor[@]}" 0.5,1.6,0.001
row 'the plan check refused the plan (code 6): axis 0: time goes back' plan --jerk-ratio 6.2321253536684109 \
  --axis -2.5477905490349966,-4.5911863894322282,10.499526281729274,3.0026357133052834,3.8673492692011489,8.4945584045787363
row 'step1 error:0; plan check (code 1)' plan --axis 0,0.3,0,0,1,4
row 'refused the motion: step1 error:4; plan check (code 1): no plan' verify --seed 3 --case 193
row 'refused the motion (invalid argument): axis 0: maxJerk is -1, it must be a positive finite number' \
  plan --axis 0,0,0,1,1,4,-1
row 'refused the motion (invalid argument): period is 0 s, it must be from 0.0001 to 1 s' \
  plan --axis 0,0,0,1,1,4 --period 0
row 'vekta verify: 1 of 20 motions failed (jerk-limit 1); replay one with vekta verify --seed 3 --case 19' \
  verify --count 20 --seed 3

# Usage and input errors.
want=2
row '--count: "-5" is not an integer from 1 to 10000000' verify --count -5
row '--count: 99999999999 is not an integer' verify --count 99999999999
row '--seed: "0x10" is not an integer' verify --seed 0x10
row 'unknown subcommand "bench": use demo, plan or verify' bench
row '--plot /nonexistent/x.png: directory /nonexistent does not exist' demo --plot /nonexistent/x.png
row '--plot x.jpg: unknown plot format ".jpg": end the name in .png, .svg or .pdf' demo --plot x.jpg
row '--plot dir: is a directory' demo --plot dir
row '--units: "ft" is neither m nor rad' demo --units ft
row '--axis 0 position: "0x10" is not a decimal number' plan --axis 0x10,0,0,1,1,4
row '--axis 0 maxAcc: "" is not a decimal number' plan --axis 0,0,0,1,1,
row '--axis 0: expected 6 comma-separated numbers' plan --axis 1,2,3
row '--jerk-ratio: 1e400 is not a finite number' plan --axis 0,0,0,1,1,4 --jerk-ratio 1e400
row 'axis 0: the velocity and acceleration limits must be positive' plan --axis 0,0,0,1,-1,4
row 'give --axis 1 to 16 times, not 17' plan "${seventeen[@]}"
row '--axis 1: no maxJerk, unlike --axis 0: give it on every --axis or on none' \
  plan --axis 0,0,0,1,1,4,40 --axis 0,0,0,1,1,4
row 'standard input: axes[0].limits.velocity: 1e400 is not a finite number' \
  plan - <<< "${open}e400, \"acceleration\": 4}}]}"
row 'standard input: axis 0 limits: "acceleration" is missing' plan - <<< "$open}}]}"
row 'standard input: motion: unknown key "speed"' \
  plan - <<< "$open, \"acceleration\": 4}}], \"speed\": 1}"
row 'standard input: parse error at line 1, column 2' plan - <<< '{]'
row 'nofile.json: No such file or directory' plan nofile.json
row 'dir: is a directory, not a motion file' plan dir
row 'give a JSON motion file or --axis' plan
row 'A subcommand is required'

# What the good runs wrote.
header=t
for i in {0..5}; do header+=",pos$i,vel$i,acc$i,jerk$i"; done
check '[ "$(head -1 vekta-demo.csv)" = "$header" ] && awk -F, "NF != 25 { exit 1 }" vekta-demo.csv'
check 'head -c 4 vekta-demo.png | grep -q PNG && [ -s vekta-demo-stop.png ]'
check 'tail -1 one.csv | awk -F, "{ exit !(\$2 == 1.5 && \$3 == 0 && \$4 == 0) }"'
check 'grep -q "<svg" one.svg && grep -q "velocity \[rad/s\]" one.svg'
check 'awk -F, "NF != 65 { exit 1 }" s16.csv && grep -qF "axis 15 limit: ±95 m/s^3" s16.svg'
check '[ "$(head -c 5 stop.pdf)" = %PDF- ]'
echo "vekta tool: $failed failed"
[ "$failed" = 0 ]
