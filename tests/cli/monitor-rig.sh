#!/bin/sh
# zavcli monitor tuning Hamlib's dummy rig behind rigctld, on the demo recordings; then
# monitor-summary on its log, Ctrl-C mid-run, the rig gone, an unwritable log and bad usage.
zavcli=$1
examples=$2
. "$(dirname "$0")/harness.sh"
start_rigctld
port=$rig_port

files="--profile $examples/example.zav --step1 $examples/soundcard.wav --step2 $examples/receiver.wav
    --step3 $examples/external.wav"
rig="$files --rig 2 --rig-port 127.0.0.1:$port --settle 50 --every 1s"
# shellcheck disable=SC2086 # $files and $rig are lists of words
"$zavcli" monitor $rig --frequencies 3.5,5.3,7.0 --count 2 --log run.tab > run.out 2> run.err || fail "run: $(cat run.err)"
[ "$(wc -l < run.out) $(grep -c ' MHz  FsRms ' run.out)" = "6 6" ] || fail "one line per observation: $(cat run.out)"
[ "$(wc -l < run.tab)" = 7 ] || fail "log rows: $(wc -l < run.tab)"
[ "$(cut -f9 run.tab | tr -d '\r' | tail -n +2 | tr '\n' ' ')" = "3.500 5.300 7.000 3.500 5.300 7.000 " ] ||
    fail "frequencies logged: $(cut -f9 run.tab)"
[ "$(rigctl -m 2 -r 127.0.0.1:$port f m | head -2 | tr '\n' ' ')" = "7000000 USB " ] || fail "rig left elsewhere"
grep -q 'antenna gain .* is used on every frequency' run.err || fail "antenna notice: $(cat run.err)"

# Each frequency's two readings in the summary, whatever hour they fell in.
"$zavcli" monitor-summary run.tab --column Frequency > summary.txt
awk -F'\t' '$1 == "5.300" { n += $3; if ($5 != "5.30") bad = 1 } END { exit !(n == 2 && !bad) }' \
    summary.txt || fail "summary: $(cat summary.txt)"

# Ctrl-C mid-run: the run ends at once, every row whole.
# shellcheck disable=SC2086
"$zavcli" monitor $rig --frequencies 3.5,7.0 --count 1000 --log int.tab > int.out 2> int.err & mon=$!; started $mon
sleep 3
kill -INT $mon
wait $mon && grep -q 'Run ended' int.err || fail "interrupted run: $(cat int.err)"
[ "$(wc -l < int.tab)" -ge 3 ] && [ "$(wc -l < int.tab)" -lt 40 ] &&
    awk -F'\t' 'NR > 1 && NF != 32 || !/\r$/ { exit 1 }' int.tab && [ "$(tail -c 1 int.tab | od -An -c | tr -d ' ')" = '\n' ] ||
    fail "interrupted: $(wc -l < int.tab) rows, or one cut short"

# The rig gone: told in words, frequency by frequency, and the run cannot start.
stop_peer "$rigd"
# shellcheck disable=SC2086
check_exit 1 "cannot open rig model 2 at 127.0.0.1:$port" "$zavcli" monitor $rig --frequencies 3.5,7.0 --count 1 \
    --log gone.tab

# A data log that cannot be written stops the run with a clear message.
mkdir folder.tab
# shellcheck disable=SC2086
check_exit 1 "Cannot append to the data log" "$zavcli" monitor $files --count 3 --every 1s --log folder.tab

# Bad usage, an unknown rig model or column, a folder as the log.
refusals 2 "" "$zavcli monitor" "--every soon; --frequencies 7,abc; --count 2 --until 10:00;
    --frequencies 3.5,7.0; --rig x; --step2 $examples/receiver.wav; --bogus"
check_exit 1 "no rig model 999999" "$zavcli" monitor --rig 999999 --rig-port x
check_exit 2 "" "$zavcli" monitor-summary
check_exit 1 "no column NoSuchKey" "$zavcli" monitor-summary run.tab --column NoSuchKey
check_exit 1 "" "$zavcli" monitor-summary "$work"
echo "monitor: all checks passed"
