#!/bin/sh
# zavcli measure on the demo recordings: report, data log and saved report byte for byte, and
# runs that cannot give results.   measure-demo.sh ZAVCLI EXAMPLES_DIR EXPECTED_DIR
# shellcheck disable=SC2086 # lists of words, split on purpose
zavcli=$1 examples=$2 expected=$3
. "$(dirname "$0")/harness.sh"
export TZ=UTC
cp "$examples/soundcard.wav" "$examples/receiver.wav" "$examples/external.wav" "$examples/example.zav" .
touch -d '2026-11-21 09:30:15 UTC' external.wav # the observation's time stamp
steps="soundcard.wav receiver.wav external.wav" m="$zavcli measure --profile example.zav"
$m --log log.tab --report saved.txt $steps > report.txt
version=$(sed -n '2s/^Version\t\([0-9.]*\).*/\1/p' report.txt)
sed "s/@VERSION@/$version/" "$expected/demo-report.txt" | cmp report.txt - || fail "report"
printf '\r\n' | cat report.txt - | cmp - saved.txt || fail "saved report"
sed "s/@VERSION@/$version/" "$expected/demo-log.tab" | cmp log.tab - || fail "data log"
$m --log log.tab $steps > /dev/null # appends one row, without a second header
[ "$(grep -c '^Program' log.tab) $(grep -c '^ZAV' log.tab)" = "1 2" ] || fail "appended log"

# Limits off: results shown; logging, saving or posting them is refused before any work.
$m --limits off $steps | grep -q '^RMS Rx power (dBm)	-' || fail "limits off"
refusals 2 "limits off" "$m --limits off" "--log off.tab $steps; --report off.rep $steps; --post $steps"
[ ! -e off.tab ] && [ ! -e off.rep ] || fail "limits off: a file written"

# Bad profiles and files, a short recording (analysed as far as it goes), the wrong order.
check_refused 2 "no such profile: exmaple.zav" "$zavcli" measure --profile exmaple.zav $steps
printf 'RIFF....WAVEjunk' > junk.wav
check_refused 1 "junk.wav gave no measurement" $m junk.wav receiver.wav external.wav
grep -q 'Unsupported WAVE file format.' err.txt || fail "junk: $(cat err.txt)"
head -c 2044 external.wav > short.wav
check_exit 0 "shorter than its header claims: 1000 of" $m soundcard.wav receiver.wav short.wav
check_exit 1 "Check voltage range." $m --json external.wav soundcard.wav receiver.wav
grep -q '"ran":false' out.txt && grep -q '"Fa":null,"P372":null' out.txt || fail "wrong order: $(cat out.txt)"
sed 's/^Bandwidth=.*/Bandwidth=0/' example.zav > zero.zav
check_refused 1 "Value error: Bandwidth must be > 0" "$zavcli" measure --profile zero.zav $steps
check_refused 1 "no results to calibrate from" "$zavcli" measure --limits off --calibrate enr:15 $steps
check_refused 2 "Value error: Level must be a number" "$zavcli" measure --calibrate enr:abc $steps
refusals 2 "--calibrate takes" "$zavcli measure --calibrate" "watts:3 $steps; enr $steps; 15 $steps"
check_refused 2 "--calibrate takes" "$zavcli" measure --calibrate "" $steps
refusals 2 "" "$zavcli measure" "$steps --calibrate; soundcard.wav receiver.wav; --limits maybe a b c"
check_exit 1 "" "$zavcli" measure nosuch.wav receiver.wav external.wav
check_exit 1 "names no server address (url)" $m --post $steps
echo ok
