#!/bin/sh
# zavcli record and monitor on a private PulseAudio server: files read back by sox, levels
# followed, inputs and the server vanishing.   pulse.sh ZAVCLI EXAMPLES_DIR DATA_DIR
zavcli=$1 examples=$2 data=$3
. "$(dirname "$0")/harness.sh"
start_pulse
start_rigctld
feeder=
play() { # FILE, in place of what played before
    [ -z "$feeder" ] || stop_peer $feeder
    paplay -d zavsink "$1" & feeder=$!; started $feeder
}
"$zavcli" record --list-devices | grep -q . || fail "no input listed"
sox -n -r 44100 -c 1 -b 16 played.wav synth 30 sine 1000 vol 0.3
play played.wav && pulse_wait_playing || fail "paplay did not start"
# 1000 ms keep 44100 samples, interval 64 in samples mode 65536; --interval beats the profile.
"$zavcli" record ms.wav --profile "$data/record-1000ms.zav" > ms.out
[ "$(grep -c -x -e 'SampleRate.44100' -e 'Samples.44100' ms.out)" = 2 ] || fail "ms.out: $(cat ms.out)"
"$zavcli" record k.wav --profile "$data/record-64k.zav" > /dev/null
"$zavcli" record q.wav --profile "$data/record-1000ms.zav" --interval 250 --device zavmic > /dev/null
[ "$(soxi -s ms.wav) $(soxi -r ms.wav) $(soxi -c ms.wav) $(soxi -b ms.wav) $(wc -c < ms.wav)" = \
    "44100 44100 1 16 88244" ] && [ "$(soxi -s k.wav) $(soxi -s q.wav)" = "65536 11025" ] &&
    [ ! -e ms.tmp ] || fail "sox reads $(soxi ms.wav k.wav q.wav), or the raw file was left"

refusals 2 "" "$zavcli" "record; record x.wav --interval soon; record x.tmp"
check_exit 1 "No Such Input" "$zavcli" record x.wav --device "No Such Input"
mkdir bare && cp "$zavcli" "$(dirname "$zavcli")/zavcli-audio" bare/
check_exit 1 'ZAV.wav" is missing' bare/zavcli record bare.wav

# monitor fed white noise (RMS vol/sqrt(3)) 1.7, 3.4, 6.8 times the receiver's 0.027 by frequency.
for f in 3500000:0.0795 5300000:0.159 7000000:0.318 receiver:0.0468; do
    sox -n -r 44100 -c 1 -b 16 "${f%:*}.wav" synth 120 whitenoise vol "${f#*:}"
done
(
    trap '[ -z "$feeder" ] || kill $feeder; exit 0' TERM
    while :; do
        f=$(rigctl -m 2 -r 127.0.0.1:$rig_port f 2> /dev/null || true)
        [ ! -e "$f.wav" ] || [ "$f" = "${playing:-}" ] || { play "$f.wav" && playing=$f; }
        sleep 0.1
    done
) & feeder=$!; started $feeder
"$zavcli" monitor --profile "$examples/example.zav" --frequencies 3.5,5.3,7.0 --every 15s \
    --count 3 --rig 2 --rig-port 127.0.0.1:$rig_port --settle 1500 --log live.tab --device zavmic \
    --step1 "$examples/soundcard.wav" --step2 "$examples/receiver.wav" 2> live.err > /dev/null &&
    grep -q 'Run ended' live.err && [ "$(wc -l < live.tab)" = 10 ] || fail "run: $(cat live.err)"
# Received power follows Text = Y*T0 + (Y-1)*Te, Te = T0*(F-1) for the receiver's 8 dB, and
# Y = 1.7^2, 3.4^2, 6.8^2: steps of 7.18 and 6.27 dB.
awk -F'\t' 'NR > 1 { s[$9] += $21; n[$9]++; p[$9] = p[$9] " " $21 } END {
    d1 = s["5.300"] / n["5.300"] - s["3.500"] / n["3.500"]
    d2 = s["7.000"] / n["7.000"] - s["5.300"] / n["5.300"]
    if (d1 > 6.6 && d1 < 7.8 && d2 > 5.7 && d2 < 6.9) exit 0
    for (f in p) print f ":" p[f]
    exit 1
}' live.tab >&2 || fail "levels not followed"

# The input removed in step 2 and cycle 1, cycle 2's recording moved: gaps told, step 2 made
# again, the run goes on.
play receiver.wav && sed 's/^Interval=.*/Interval=5000/' "$examples/example.zav" > long.zav
"$zavcli" monitor --profile long.zav --every 7s --count 3 --log gap.tab \
    --step1 "$examples/soundcard.wav" > gap.out 2> gap.err & mon=$!; started $mon
stream=-1
new_stream() {
    s=$(pactl list short source-outputs | awk -v l=$stream '$1 != l && $3 != "-" { print $1; exit }')
    [ -n "$s" ] && stream=$s
}
recording() { wait_for 200 new_stream || fail "no recording began: $(cat gap.err)"; }
remove_source() {
    sleep 1
    pactl unload-module "$(pactl list short modules | awk '/module-remap-source/ { print $1 }')"
    sleep 2
    pactl load-module module-remap-source master=zavsink.monitor source_name=zavmic channels=1 > /dev/null
    pactl set-default-source zavmic
}
recording && remove_source # step 2
recording && recording     # step 2 again, cycle 1
play 5300000.wav
remove_source
recording && sleep 1 # cycle 2, moved by the server to another source while it records
pactl move-source-output "$stream" zavsink.monitor
wait $mon || fail "gap run: exit $? $(cat gap.err)"
for told in 'The audio input was removed' 'moved the recording to another input' \
    'Audio input gap at 7.100 MHz during step 2' 'Audio input gap at 7.100 MHz, cycle 1' \
    'Audio input gap at 7.100 MHz, cycle 2'; do
    grep -q "$told" gap.err || fail "not told: $told: $(cat gap.err)"
done
[ "$(grep -c 'Audio input gap' gap.err)" = 3 ] && [ "$(wc -l < gap.tab)" = 2 ] ||
    fail "rows: $(cat gap.tab gap.err)"
awk -F'\t' 'NR == 2 { n = NF } NR > 1 && NF != n || !/\r$/ { exit 1 }' gap.tab || fail "a half row"

# The server gone mid-recording (paplay stopped first: it now and then crashes then).
stop_peer $feeder
start=$(date +%s)
(sleep 2 && pactl exit) &
check_exit 1 'Error: recording wave file: ' \
    "$zavcli" record gone.wav --profile "$data/record-1000ms.zav" --interval 20000
[ $(($(date +%s) - start)) -lt 15 ] || fail "server gone: took too long"
ls | grep -E '^(x|gone|bare)\.(wav|tmp)$' && fail "files left by a failed recording"
echo "pulse: all checks passed"
