#!/bin/sh
# zavcli record on a private PulseAudio server playing into its null sink, read back by sox;
# then bad usage, an unknown input, the server gone mid-recording and a missing template.
#   record-pulse.sh ZAVCLI DATA_DIR
zavcli=$1
data=$2
. "$(dirname "$0")/harness.sh"
start_pulse
"$zavcli" record --list-devices | grep -q . || fail "no input listed"

sox -n -r 44100 -c 1 -b 16 played.wav synth 30 sine 1000 vol 0.3
paplay -d zavsink played.wav & player=$!; started $player
pulse_wait_playing || fail "paplay did not start"

# Milliseconds: 1000 ms at 44100 Hz keeps 44100 samples; in samples mode, interval 64 keeps
# 65536; an interval on the command line wins over the profile's.
"$zavcli" record ms.wav --profile "$data/record-1000ms.zav" > ms.out
[ "$(grep -c -x -e 'SampleRate.44100' -e 'Samples.44100' ms.out)" = 2 ] || fail "ms.out: $(cat ms.out)"
[ "$(soxi -s ms.wav) $(soxi -r ms.wav) $(soxi -c ms.wav) $(soxi -b ms.wav) $(wc -c < ms.wav)" = "44100 44100 1 16 88244" ] &&
    [ ! -e ms.tmp ] || fail "sox reads $(soxi ms.wav), or the raw file was left"
"$zavcli" record k.wav --profile "$data/record-64k.zav" > /dev/null
"$zavcli" record q.wav --profile "$data/record-1000ms.zav" --interval 250 --device zavmic > /dev/null
[ "$(soxi -s k.wav) $(soxi -s q.wav)" = "65536 11025" ] || fail "samples mode, --interval: $(soxi -s k.wav q.wav)"

refusals 2 "" "$zavcli" "record; record x.wav --interval soon; record x.tmp"
check_exit 1 "No Such Input" "$zavcli" record x.wav --device "No Such Input"
[ ! -e x.wav ] && [ ! -e x.tmp ] || fail "files left by a failed recording"

# The sound system goes away two seconds into a twenty-second recording; the player is stopped
# first, as paplay itself now and then crashes when its server goes.
stop_peer $player
start=$(date +%s)
(sleep 2 && pactl exit) &
check_exit 1 'Error: recording wave file: ' "$zavcli" record gone.wav --profile "$data/record-1000ms.zav" --interval 20000
[ $(($(date +%s) - start)) -lt 15 ] || fail "server gone: took too long"
[ ! -e gone.wav ] && [ ! -e gone.tmp ] || fail "files left after the server went"

# A program without its template beside it records nothing and says why.
mkdir bare && cp "$zavcli" "$(dirname "$zavcli")/zavcli-audio" bare/
check_exit 1 'ZAV.wav" is missing' bare/zavcli record bare.wav
[ ! -e bare.wav ] || fail "no template: a file was written"
echo "record: all checks passed"
