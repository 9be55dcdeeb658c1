#!/bin/sh
# zavcli monitor on live audio: a private PulseAudio server's remapped source is the input,
# fed a different level for each frequency the rig (Hamlib's dummy behind rigctld) is tuned
# to, so the logged received powers must follow those levels. Then the source is removed and
# put back during a run: a gap is logged and the run goes on.
zavcli=$1
examples=$2
. "$(dirname "$0")/harness.sh"
start_pulse

start_rigctld
port=$rig_port

# White noise of RMS vol/sqrt(3): 1.7, 3.4 and 6.8 times the receiver recording's 0.027,
# 6.02 dB apart.
sox -n -r 44100 -c 1 -b 16 3500000.wav synth 120 whitenoise vol 0.0795
sox -n -r 44100 -c 1 -b 16 5300000.wav synth 120 whitenoise vol 0.159
sox -n -r 44100 -c 1 -b 16 7000000.wav synth 120 whitenoise vol 0.318

# Plays the level of whatever frequency the rig is on.
(
    playing= player=
    trap 'if [ -n "$player" ]; then kill $player 2> /dev/null; fi; exit 0' TERM
    while :; do
        f=$(rigctl -m 2 -r 127.0.0.1:$port f 2> /dev/null || true)
        if [ -n "$f" ] && [ "$f" != "$playing" ] && [ -e "$f.wav" ]; then
            if [ -n "$player" ]; then kill $player 2> /dev/null || true; fi
            paplay -d zavsink "$f.wav" &
            player=$!
            playing=$f
        fi
        sleep 0.1
    done
) &
feeder=$!
started $feeder

"$zavcli" monitor --profile "$examples/example.zav" --frequencies 3.5,5.3,7.0 --every 15s \
    --count 3 --rig 2 --rig-port 127.0.0.1:$port --settle 1500 --log live.tab --device zavmic \
    --step1 "$examples/soundcard.wav" --step2 "$examples/receiver.wav" > live.out 2> live.err &
mon=$!
started $mon
rc=0; wait $mon || rc=$?; mon=
[ $rc = 0 ] || fail "run: exit $rc $(cat live.err)"
grep -q 'Run ended' live.err || fail "no end: $(cat live.err)"
rows=$(($(wc -l < live.tab) - 1))
[ $rows = 9 ] || fail "rows: $rows $(cat live.err)"
# Received power follows the external noise temperature Text = Y*T0 + (Y-1)*Te with the
# receiver's noise figure of 8 dB (Te = T0*(F-1)) and Y = 1.7^2, 3.4^2, 6.8^2 against the
# receiver recording: steps of 7.18 and 6.27 dB.
awk -F'\t' 'NR > 1 { p[$9] = p[$9] " " $21 } END { for (f in p) print f, p[f] }' live.tab > powers.txt
awk -F'\t' 'NR > 1 { s[$9] += $21; n[$9]++ } END {
    d1 = s["5.300"] / n["5.300"] - s["3.500"] / n["3.500"]
    d2 = s["7.000"] / n["7.000"] - s["5.300"] / n["5.300"]
    printf "steps %.2f and %.2f dB\n", d1, d2
    exit !(d1 > 6.6 && d1 < 7.8 && d2 > 5.7 && d2 < 6.9)
}' live.tab || fail "levels not followed: $(cat powers.txt)"

# The default input removed in the middle of a recording, once in step 2 and once in cycle 1,
# then cycle 2's recording moved to another source: each is a gap told in words and the
# recording is dropped; step 2 is made again, and the run logs again once the source is back.
# The removals are timed by the server's list of recording streams; recordings last 5 s.
stop_peer $feeder
sox -n -r 44100 -c 1 -b 16 receiver.wav synth 120 whitenoise vol 0.0468
paplay -d zavsink receiver.wav &
feeder=$!
started $feeder
sed 's/^Interval=.*/Interval=5000/' "$examples/example.zav" > long.zav
"$zavcli" monitor --profile long.zav --every 7s --count 3 --log gap.tab \
    --step1 "$examples/soundcard.wav" > gap.out 2> gap.err &
mon=$!
started $mon
stream=-1
recording() { # waits for a recording stream other than the last one
    i=0
    until s=$(pactl list short source-outputs | awk -v l=$stream '$1 != l && $3 != "-" { print $1; exit }') &&
        [ -n "$s" ]; do
        i=$((i + 1)); [ $i -lt 400 ] || fail "no recording began: $(cat gap.err)"; sleep 0.05
    done
    stream=$s
}
remove_source() {
    sleep 1
    pactl unload-module "$(pactl list short modules | awk '/module-remap-source/ { print $1 }')"
    sleep 2
    pactl load-module module-remap-source master=zavsink.monitor source_name=zavmic channels=1 > /dev/null
    pactl set-default-source zavmic
}
recording; remove_source # step 2
recording                # step 2 again
recording                # cycle 1
stop_peer $feeder
paplay -d zavsink 5300000.wav &
feeder=$!
started $feeder
remove_source
recording # cycle 2, moved by the server to another source while it records
sleep 1
pactl move-source-output "$stream" zavsink.monitor
rc=0; wait $mon || rc=$?; mon=
[ $rc = 0 ] || fail "gap run: exit $rc $(cat gap.err)"
grep -q 'The audio input was removed' gap.err || fail "no reason: $(cat gap.err)"
grep -q 'moved the recording to another input' gap.err || fail "no move told: $(cat gap.err)"
grep -q 'Audio input gap at 7.100 MHz during step 2' gap.err || fail "no step 2 gap: $(cat gap.err)"
grep -q 'Audio input gap at 7.100 MHz, cycle 1' gap.err || fail "no gap told: $(cat gap.err)"
grep -q 'Audio input gap at 7.100 MHz, cycle 2' gap.err || fail "no move gap: $(cat gap.err)"
[ "$(grep -c 'Audio input gap' gap.err)" = 3 ] || fail "gaps: $(cat gap.err)"
[ "$(wc -l < gap.tab)" = 2 ] || fail "rows: $(cat gap.tab) $(cat gap.err)"
awk -F'\t' 'NR == 2 { n = NF } NR > 1 && NF != n || !/\r$/ { exit 1 }' gap.tab || fail "a half row"
echo "monitor pulse: all checks passed"
