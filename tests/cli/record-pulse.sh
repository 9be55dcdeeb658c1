#!/bin/sh
# zavcli record end to end on a private PulseAudio server: what paplay plays into the null
# sink is recorded through the remapped source, its counts and format read back by sox. Then
# bad usage, an unknown input, a server that goes away mid-recording (the error path, not a
# hang) and a missing template. (Levels and the messages without any sound system are the
# audio adapters' tests, in tests/qt.)
set -eu
zavcli=$1
data=$2
here=$(dirname "$0")
. "$here/pulse-server.sh"
work=$(mktemp -d)
player=
cleanup() {
    if [ -n "$player" ]; then kill "$player" 2> /dev/null || true; fi
    pulse_stop
    rm -rf "$work"
}
trap cleanup EXIT
fail() {
    echo "FAIL: $*" >&2
    exit 1
}

pulse_start || fail "PulseAudio could not be started for the recording test"
"$zavcli" record --list-devices > "$work/devices.txt"
grep -q . "$work/devices.txt" || fail "no input listed"

# 30 s of 1000 Hz at 0.3 of full scale.
sox -n -r 44100 -c 1 -b 16 "$work/played.wav" synth 30 sine 1000 vol 0.3
paplay -d zavsink "$work/played.wav" &
player=$!
pulse_wait_playing || fail "paplay did not start"

# Milliseconds: 1000 ms at 44100 Hz keeps 44100 samples.
cd "$work"
"$zavcli" record ms.wav --profile "$data/record-1000ms.zav" > ms.out
grep -qx "Samples	44100" ms.out || fail "ms.out: $(cat ms.out)"
grep -qx "SampleRate	44100" ms.out || fail "rate"
[ "$(soxi -s ms.wav)" = 44100 ] || fail "sox counts $(soxi -s ms.wav) samples"
[ "$(soxi -r ms.wav)" = 44100 ] && [ "$(soxi -c ms.wav)" = 1 ] && [ "$(soxi -b ms.wav)" = 16 ] ||
    fail "format"
[ "$(wc -c < ms.wav)" = 88244 ] || fail "size $(wc -c < ms.wav)"
[ ! -e ms.tmp ] || fail "the raw recording was left"

# Samples: interval 64 keeps 65536; an interval given on the command line wins.
"$zavcli" record k.wav --profile "$data/record-64k.zav" > k.out
[ "$(soxi -s k.wav)" = 65536 ] || fail "samples mode: $(soxi -s k.wav)"
"$zavcli" record q.wav --profile "$data/record-1000ms.zav" --interval 250 --device zavmic > q.out
[ "$(soxi -s q.wav)" = 11025 ] || fail "--interval: $(soxi -s q.wav)"

# Bad usage and an input that is not there.
rc=0; "$zavcli" record 2> /dev/null || rc=$?; [ $rc = 2 ] || fail "no file: $rc"
rc=0; "$zavcli" record x.wav --interval soon 2> /dev/null || rc=$?; [ $rc = 2 ] || fail "bad interval: $rc"
rc=0; "$zavcli" record x.tmp 2> /dev/null || rc=$?; [ $rc = 2 ] || fail ".tmp output: $rc"
rc=0; "$zavcli" record x.wav --device "No Such Input" 2> x.err || rc=$?
[ $rc = 1 ] && grep -q 'No Such Input' x.err || fail "unknown input: $rc $(cat x.err)"
[ ! -e x.wav ] && [ ! -e x.tmp ] || fail "files left by a failed recording"

# The sound system goes away two seconds into a twenty-second recording.
start=$(date +%s)
rc=0
"$zavcli" record gone.wav --profile "$data/record-1000ms.zav" --interval 20000 2> gone.err &
rec=$!
sleep 2
pactl exit
wait "$rec" || rc=$?
took=$(($(date +%s) - start))
[ $rc = 1 ] || fail "server gone: exit $rc"
grep -q 'Error: recording wave file: ' gone.err || fail "server gone: $(cat gone.err)"
[ $took -lt 15 ] || fail "server gone: took $took s"
[ ! -e gone.wav ] && [ ! -e gone.tmp ] || fail "files left after the server went"

# A program without its template beside it records nothing and says why.
mkdir bare && cp "$zavcli" "$(dirname "$zavcli")/zavcli-audio" bare/
rc=0; bare/zavcli record bare.wav 2> bare.err || rc=$?
[ $rc = 1 ] || fail "no template: exit $rc"
grep -q 'ZAV.wav" is missing' bare.err || fail "no template: $(cat bare.err)"
[ ! -e bare.wav ] || fail "no template: a file was written"

echo "record: all checks passed"
