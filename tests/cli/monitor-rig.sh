#!/bin/sh
# zavcli monitor end to end: Hamlib's dummy rig behind rigctld (started here, ended by its
# process id) is tuned over the network; the step recordings come from the demo files. Then
# Ctrl-C mid-run, the rig gone, a data log that cannot be written, bad usage, and
# monitor-summary on the log the run wrote.
zavcli=$1
examples=$2
. "$(dirname "$0")/harness.sh"
start_rigctld
port=$rig_port

files="--step1 $examples/soundcard.wav --step2 $examples/receiver.wav --step3 $examples/external.wav"
# shellcheck disable=SC2086
"$zavcli" monitor --profile "$examples/example.zav" --frequencies 3.5,5.3,7.0 --every 1s \
    --count 2 --rig 2 --rig-port 127.0.0.1:$port --settle 50 --log run.tab $files \
    > run.out 2> run.err || fail "run: $(cat run.err)"
[ "$(wc -l < run.out)" = 6 ] || fail "one line per observation: $(cat run.out)"
[ "$(grep -c ' MHz  FsRms ' run.out)" = 6 ] || fail "lines: $(cat run.out)"
[ "$(wc -l < run.tab)" = 7 ] || fail "log rows: $(wc -l < run.tab)"
[ "$(cut -f9 run.tab | tr -d '\r' | tail -n +2 | tr '\n' ' ')" = "3.500 5.300 7.000 3.500 5.300 7.000 " ] ||
    fail "frequencies logged: $(cut -f9 run.tab)"
[ "$(rigctl -m 2 -r 127.0.0.1:$port f)" = 7000000 ] || fail "the rig was left elsewhere"
[ "$(rigctl -m 2 -r 127.0.0.1:$port m | head -1)" = USB ] || fail "mode"
grep -q 'antenna gain .* is used on every frequency' run.err || fail "antenna notice: $(cat run.err)"

# Each frequency's two readings in the summary, whatever hour they fell in.
"$zavcli" monitor-summary run.tab --column Frequency > summary.txt
awk -F'\t' '$1 == "5.300" { n += $3; if ($5 != "5.30") bad = 1 } END { exit !(n == 2 && !bad) }' \
    summary.txt || fail "summary: $(cat summary.txt)"

# Ctrl-C mid-run: the run ends at once, every row whole.
# shellcheck disable=SC2086
"$zavcli" monitor --profile "$examples/example.zav" --frequencies 3.5,7.0 --every 1s \
    --count 1000 --rig 2 --rig-port 127.0.0.1:$port --settle 50 --log int.tab $files \
    > int.out 2> int.err &
mon=$!
started $mon
sleep 3
kill -INT $mon
rc=0; wait $mon || rc=$?
[ $rc = 0 ] || fail "interrupted run: exit $rc $(cat int.err)"
grep -q 'Run ended' int.err || fail "no end: $(cat int.err)"
rows=$(wc -l < int.tab)
[ "$rows" -ge 3 ] && [ "$rows" -lt 40 ] || fail "interrupted rows: $rows"
[ "$(tr -cd '\n' < int.tab | wc -c)" = "$(tr -cd '\r' < int.tab | wc -c)" ] || fail "a row without CR LF"
[ "$(tail -c 2 int.tab | od -An -c | tr -d ' ')" = '\r\n' ] || fail "last row cut"
[ "$(awk -F'\t' 'NR > 1 && NF != 32' int.tab | wc -l)" = 0 ] || fail "a row with a missing field"

# The rig gone: told in words, and the run goes on.
stop_peer "$rigd"
# shellcheck disable=SC2086
"$zavcli" monitor --profile "$examples/example.zav" --frequencies 3.5,7.0 --count 1 \
    --rig 2 --rig-port 127.0.0.1:$port --log gone.tab $files > gone.out 2> gone.err || true
grep -q "cannot open rig model 2 at 127.0.0.1:$port" gone.err || fail "rig gone: $(cat gone.err)"

# A data log that cannot be written stops the run with a clear message.
mkdir folder.tab
rc=0
# shellcheck disable=SC2086
"$zavcli" monitor --profile "$examples/example.zav" --count 3 --every 1s --log folder.tab \
    $files > /dev/null 2> full.err || rc=$?
[ $rc = 1 ] && grep -q 'Cannot append to the data log' full.err || fail "log unwritable: $rc $(cat full.err)"

# Bad usage.
for args in "--every soon" "--frequencies 7,abc" "--count 2 --until 10:00" "--frequencies 3.5,7.0" \
    "--rig x" "--step2 $examples/receiver.wav" "--bogus"; do
    rc=0
    # shellcheck disable=SC2086
    "$zavcli" monitor $args > /dev/null 2>&1 || rc=$?
    [ $rc = 2 ] || fail "usage '$args': exit $rc"
done
rc=0; "$zavcli" monitor --rig 999999 --rig-port x 2> model.err || rc=$?
[ $rc = 1 ] && grep -q 'no rig model 999999' model.err || fail "unknown model: $rc"
rc=0; "$zavcli" monitor-summary 2> /dev/null || rc=$?; [ $rc = 2 ] || fail "summary without log: $rc"
rc=0; "$zavcli" monitor-summary run.tab --column NoSuchKey 2> key.err || rc=$?
[ $rc = 1 ] && grep -q 'no column NoSuchKey' key.err || fail "unknown column: $rc"
rc=0; "$zavcli" monitor-summary "$work" 2> /dev/null || rc=$?; [ $rc = 1 ] || fail "folder as log: $rc"

echo "monitor: all checks passed"
