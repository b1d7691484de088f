#!/usr/bin/env bash
# The vekta tool as a user meets it, one run a row: the exit status (0 planned
# and checked, 1 refused, 2 a usage, input or output error), a fragment of what
# it says (its one line on stderr when it refuses or fails, standard output
# otherwise), what it reads on standard input, and the arguments. Then the
# files the good runs wrote.
#
#   tool_test.sh VEKTA DATA_DIR VERSION
set -uo pipefail
vekta=$1
data=$2
version=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
passed=0
failed=0

verdict() {
  if [ "$1" = ok ]; then passed=$((passed + 1)); else failed=$((failed + 1)); echo "FAIL: $2"; fi
}

row() {
  local want=$1 fragment=$2 input=$3
  shift 3
  "$vekta" "$@" <<< "$input" > out 2> err
  local got=$? said=out lines=0
  [ "$want" = 0 ] || { said=err; lines=1; }
  if [ "$got" = "$want" ] && grep -qF -- "$fragment" $said && [ "$(wc -l < err)" = $lines ]; then
    verdict ok
  else
    verdict no "vekta $* -> status $got (want $want, \"$fragment\"): $(head -c 400 err) $(head -c 200 out)"
  fi
}

check() { if eval "$2"; then verdict ok; else verdict no "$1"; fi; }

motion() { echo "{\"jerkRatio\": 10, \"axes\": [{\"target\": 1, \"limits\": {$1}}]$2}"; }
good=$(motion '"velocity": 1, "acceleration": 4' '')
beyond=(--jerk-ratio 6.2321253536684109
        --axis -2.5477905490349966,-4.5911863894322282,10.499526281729274,3.0026357133052834,3.8673492692011489,8.4945584045787363)
conveyor=(plan --mode conveyor --axis 0,0,0,1.5,1,3 --conveyor)
# Through the library's own calls: 7 axes at 1 ms with a jerk limit each, 16
# from JSON at 10 ms, 17 (one too many).
seven=(--period 0.001)
seventeen=()
sixteen='{"period": 0.01, "axes": ['
for i in {0..16}; do
  [ $i -lt 7 ] && seven+=(--axis "0,0,0,$((i + 1)).5,2,8,$((40 + 10 * i))")
  [ $i -lt 16 ] && sixteen+="{\"target\": 0.$((1 + i % 5)), \"maxJerk\": $((20 + 5 * i)), \"limits\": {\"velocity\": 1, \"acceleration\": 4}}"
  [ $i -lt 15 ] && sixteen+=', '
  seventeen+=(--axis 0,0,0,1,1,4)
done
sixteen+=']}'
mkdir dir

# Good runs.
row 0 'plan check: passed' '' demo
row 0 'posUpd: 1st pt' '' demo --library-output --no-plot --save-motion saved.json
row 0 'plan check: passed' '' plan "$data/one_axis.json" --csv one.csv --plot one.svg --units rad
row 0 'velocity update, 1 axis' '' plan --mode velocity --axis 0.1,1.5,2,0,2,5 --plot stop.pdf
row 0 'position update, 6 axes' '' plan saved.json
row 0 'plan check: passed' "$good" plan -
row 0 'plan check: passed' '' plan --recovery --axis 0,0.3,0,0,1,4
row 0 '   6    0.0000    7.5000    7.5000   4.080 s    2.0000 / 2          8.0000 / 8          100.000 / 100        4080' \
  '' plan "${seven[@]}"
row 0 '  15    0.0000    0.1000    0.1000   0.850 s    0.1288 / 1          3.1962 / 4           95.000 / 95           85' \
  "$sixteen" plan - --csv s16.csv --plot s16.svg
row 0 'conveyor                   default' '' verify --recovery --count 20 --seed 2
row 0 'sweep: seed 2, 20 motions' '' verify --count 20 --seed 2
row 0 'periods; ok' '' verify --seed 3 --case 2
row 0 "vekta $version" '' --version
row 0 'Exit status (every subcommand): 0 planned and checked' '' --help

# Refused: the library's reason and the plan check's, in one line.
row 1 'refused the motion: vekta: failed to catch up with conveyor-1.500000+1.083333>1.600000; plan check (code 2)' \
  '' "${conveyor[@]}" 0.5,1.6,1
row 1 'the conveyor update refuses a spare below 0.002' '' "${conveyor[@]}" 0.5,1.6,0.001
row 1 'the plan check refused the plan (code 6): axis 0: time goes back' '' plan "${beyond[@]}"
row 1 'step1 error:0; plan check (code 1)' '' plan --axis 0,0.3,0,0,1,4
row 1 'refused the motion: step1 error:4; plan check (code 1): no plan' '' verify --seed 3 --case 193
row 1 'refused the motion (invalid argument): axis 0: maxJerk is -1, it must be a positive finite number' '' \
  plan --axis 0,0,0,1,1,4,-1
row 1 'refused the motion (invalid argument): period is 0 s, it must be from 0.0001 to 1 s' '' \
  plan --axis 0,0,0,1,1,4 --period 0
row 1 'vekta verify: 1 of 20 motions failed (jerk-limit 1); replay one with vekta verify --seed 3 --case 19' '' \
  verify --count 20 --seed 3

# Usage and input errors.
row 2 '--count: "-5" is not an integer from 1 to 10000000' '' verify --count -5
row 2 '--count: 99999999999 is not an integer' '' verify --count 99999999999
row 2 '--seed: "0x10" is not an integer' '' verify --seed 0x10
row 2 'unknown subcommand "bench": use demo, plan or verify' '' bench
row 2 '--plot /nonexistent/x.png: directory /nonexistent does not exist' '' demo --plot /nonexistent/x.png
row 2 '--plot x.jpg: unknown plot format ".jpg": end the name in .png, .svg or .pdf' '' demo --plot x.jpg
row 2 '--plot dir: is a directory' '' demo --plot dir
row 2 '--units: "ft" is neither m nor rad' '' demo --units ft
row 2 '--axis 0 position: "0x10" is not a decimal number' '' plan --axis 0x10,0,0,1,1,4
row 2 '--axis 0 maxAcc: "" is not a decimal number' '' plan --axis 0,0,0,1,1,
row 2 '--axis 0: expected 6 comma-separated numbers' '' plan --axis 1,2,3
row 2 '--jerk-ratio: 1e400 is not a finite number' '' plan --axis 0,0,0,1,1,4 --jerk-ratio 1e400
row 2 'axis 0: the velocity and acceleration limits must be positive' '' plan --axis 0,0,0,1,-1,4
row 2 'give --axis 1 to 16 times, not 17' '' plan "${seventeen[@]}"
row 2 '--axis 1: no maxJerk, unlike --axis 0: give it on every --axis or on none' '' \
  plan --axis 0,0,0,1,1,4,40 --axis 0,0,0,1,1,4
row 2 'standard input: axes[0].limits.velocity: 1e400 is not a finite number' \
  "$(motion '"velocity": 1e400, "acceleration": 4' '')" plan -
row 2 'standard input: axis 0 limits: "acceleration" is missing' "$(motion '"velocity": 1' '')" plan -
row 2 'standard input: motion: unknown key "speed"' "$(motion '"velocity": 1, "acceleration": 4' ', "speed": 1')" plan -
row 2 'standard input: parse error at line 1, column 2' '{]' plan -
row 2 'nofile.json: No such file or directory' '' plan nofile.json
row 2 'dir: is a directory, not a motion file' '' plan dir
row 2 'give a JSON motion file or --axis' '' plan
row 2 'A subcommand is required' ''
row 2 'unknown subcommand "frob"' '' frob

# What the good runs wrote.
header=t
for i in 0 1 2 3 4 5; do header+=",pos$i,vel$i,acc$i,jerk$i"; done
check 'demo CSV header' '[ "$(head -1 vekta-demo.csv)" = "$header" ]'
check 'demo CSV: 25 fields a row' "awk -F, 'NF != 25 { exit 1 }' vekta-demo.csv"
check 'demo and stop PNGs' '[ "$(head -c 4 vekta-demo.png | tail -c 3)" = PNG ] && [ -s vekta-demo-stop.png ]'
check 'the library is silent unless asked' '! grep -q posUpd <("$vekta" demo --no-plot --csv x.csv)'
check 'plan CSV ends at rest on the target' "tail -1 one.csv | awk -F, '{ exit !(\$2 == 1.5 && \$3 == 0 && \$4 == 0) }'"
check 'SVG plot, axis labelled in rad' 'grep -q "<svg" one.svg && grep -q "velocity \[rad/s\]" one.svg'
check '16 axes: CSV of 65 fields, plot with a limit each' \
  "awk -F, 'NF != 65 { exit 1 }' s16.csv && grep -qF 'axis 15 limit: ±95 m/s^3' s16.svg"
check 'PDF plot' '[ "$(head -c 5 stop.pdf)" = %PDF- ]'
echo "vekta tool: $passed passed, $failed failed"
[ "$failed" = 0 ]
