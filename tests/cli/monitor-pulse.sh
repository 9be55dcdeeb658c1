#!/bin/sh
# zavcli monitor on a private PulseAudio server's source, fed a different level for each
# frequency the dummy rig behind rigctld is on: the logged powers must follow. Then the source
# is removed and put back during a run: a gap is told, and the run goes on.
zavcli=$1
examples=$2
. "$(dirname "$0")/harness.sh"
start_pulse

start_rigctld
port=$rig_port
feeder=
play() { # plays FILE into the sink in place of what played before
    [ -z "$feeder" ] || stop_peer $feeder
    paplay -d zavsink "$1" & feeder=$!; started $feeder
}

# White noise of RMS vol/sqrt(3): 1.7, 3.4 and 6.8 times the receiver recording's 0.027,
# 6.02 dB apart.
for f in 3500000:0.0795 5300000:0.159 7000000:0.318 receiver:0.0468; do
    sox -n -r 44100 -c 1 -b 16 "${f%:*}.wav" synth 120 whitenoise vol "${f#*:}"
done

# Plays the level of whatever frequency the rig is on.
(
    trap '[ -z "$feeder" ] || kill $feeder; exit 0' TERM
    while :; do
        f=$(rigctl -m 2 -r 127.0.0.1:$port f 2> /dev/null || true)
        if [ ! -e "$f.wav" ] || [ "$f" = "${playing:-}" ]; then sleep 0.1; continue; fi
        play "$f.wav"
        playing=$f
    done
) & feeder=$!; started $feeder

"$zavcli" monitor --profile "$examples/example.zav" --frequencies 3.5,5.3,7.0 --every 15s \
    --count 3 --rig 2 --rig-port 127.0.0.1:$port --settle 1500 --log live.tab --device zavmic \
    --step1 "$examples/soundcard.wav" --step2 "$examples/receiver.wav" > live.out 2> live.err & mon=$!; started $mon
wait $mon && grep -q 'Run ended' live.err && [ "$(wc -l < live.tab)" = 10 ] || fail "run: $(cat live.err)"
# Received power follows the external noise temperature Text = Y*T0 + (Y-1)*Te with the
# receiver's noise figure of 8 dB (Te = T0*(F-1)) and Y = 1.7^2, 3.4^2, 6.8^2 against the
# receiver recording: steps of 7.18 and 6.27 dB.
awk -F'\t' 'NR > 1 { s[$9] += $21; n[$9]++; p[$9] = p[$9] " " $21 } END {
    d1 = s["5.300"] / n["5.300"] - s["3.500"] / n["3.500"]
    d2 = s["7.000"] / n["7.000"] - s["5.300"] / n["5.300"]
    if (d1 > 6.6 && d1 < 7.8 && d2 > 5.7 && d2 < 6.9) exit 0
    for (f in p) print f ":" p[f]
    exit 1
}' live.tab >&2 || fail "levels not followed"

# The default input removed in the middle of a recording, once in step 2 and once in cycle 1,
# then cycle 2's recording moved to another source: each is a gap told in words and the
# recording is dropped; step 2 is made again, and the run logs again once the source is back.
# The removals are timed by the server's list of recording streams; recordings last 5 s.
play receiver.wav
sed 's/^Interval=.*/Interval=5000/' "$examples/example.zav" > long.zav
"$zavcli" monitor --profile long.zav --every 7s --count 3 --log gap.tab \
    --step1 "$examples/soundcard.wav" > gap.out 2> gap.err & mon=$!; started $mon
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
play 5300000.wav
remove_source
recording # cycle 2, moved by the server to another source while it records
sleep 1
pactl move-source-output "$stream" zavsink.monitor
wait $mon || fail "gap run: exit $? $(cat gap.err)"
for told in 'The audio input was removed' 'moved the recording to another input' \
    'Audio input gap at 7.100 MHz during step 2' 'Audio input gap at 7.100 MHz, cycle 1' \
    'Audio input gap at 7.100 MHz, cycle 2'; do
    grep -q "$told" gap.err || fail "not told: $told: $(cat gap.err)"
done
[ "$(grep -c 'Audio input gap' gap.err)" = 3 ] || fail "gaps: $(cat gap.err)"
[ "$(wc -l < gap.tab)" = 2 ] || fail "rows: $(cat gap.tab) $(cat gap.err)"
awk -F'\t' 'NR == 2 { n = NF } NR > 1 && NF != n || !/\r$/ { exit 1 }' gap.tab || fail "a half row"
echo "monitor pulse: all checks passed"
