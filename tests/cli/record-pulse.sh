#!/bin/sh
# zavcli record on a private PulseAudio server: what paplay plays into the null sink is
# recorded through the remapped source, its counts and format read back by sox. Then bad
# usage, an unknown input, the server going away mid-recording (the error path, not a hang)
# and a missing template.
#   record-pulse.sh ZAVCLI DATA_DIR
zavcli=$1
data=$2
. "$(dirname "$0")/harness.sh"
start_pulse
"$zavcli" record --list-devices | grep -q . || fail "no input listed"

sox -n -r 44100 -c 1 -b 16 played.wav synth 30 sine 1000 vol 0.3
paplay -d zavsink played.wav &
started $!
pulse_wait_playing || fail "paplay did not start"

# Milliseconds: 1000 ms at 44100 Hz keeps 44100 samples; in samples mode, interval 64 keeps
# 65536; an interval on the command line wins over the profile's.
"$zavcli" record ms.wav --profile "$data/record-1000ms.zav" > ms.out
[ "$(grep -c -x -e 'SampleRate.44100' -e 'Samples.44100' ms.out)" = 2 ] || fail "ms.out: $(cat ms.out)"
[ "$(soxi -s ms.wav) $(soxi -r ms.wav) $(soxi -c ms.wav) $(soxi -b ms.wav)" = "44100 44100 1 16" ] ||
    fail "sox reads $(soxi ms.wav)"
[ "$(wc -c < ms.wav)" = 88244 ] && [ ! -e ms.tmp ] || fail "size $(wc -c < ms.wav), or the raw file left"
"$zavcli" record k.wav --profile "$data/record-64k.zav" > /dev/null
[ "$(soxi -s k.wav)" = 65536 ] || fail "samples mode: $(soxi -s k.wav)"
"$zavcli" record q.wav --profile "$data/record-1000ms.zav" --interval 250 --device zavmic > /dev/null
[ "$(soxi -s q.wav)" = 11025 ] || fail "--interval: $(soxi -s q.wav)"

check_exit 2 "" "$zavcli" record
check_exit 2 "" "$zavcli" record x.wav --interval soon
check_exit 2 "" "$zavcli" record x.tmp
check_exit 1 "No Such Input" "$zavcli" record x.wav --device "No Such Input"
[ ! -e x.wav ] && [ ! -e x.tmp ] || fail "files left by a failed recording"

# The sound system goes away two seconds into a twenty-second recording.
start=$(date +%s)
rc=0
"$zavcli" record gone.wav --profile "$data/record-1000ms.zav" --interval 20000 2> gone.err &
rec=$!
started $rec
sleep 2
pactl exit
wait "$rec" || rc=$?
[ $rc = 1 ] && grep -q 'Error: recording wave file: ' gone.err || fail "server gone: $rc $(cat gone.err)"
[ $(($(date +%s) - start)) -lt 15 ] || fail "server gone: took too long"
[ ! -e gone.wav ] && [ ! -e gone.tmp ] || fail "files left after the server went"

# A program without its template beside it records nothing and says why.
mkdir bare && cp "$zavcli" "$(dirname "$zavcli")/zavcli-audio" bare/
check_exit 1 'ZAV.wav" is missing' bare/zavcli record bare.wav
[ ! -e bare.wav ] || fail "no template: a file was written"
echo "record: all checks passed"
