#!/bin/sh
# Whole-step timing of a live recording: `zavcli record` with a 1000 ms interval (44100 Hz
# template: 92610 samples recorded, 44100 kept) on a private PulseAudio server's null source,
# five runs. Each run must return within interval + 1.1 s + the stream's start-up (as zavcli
# reports it) + 200 ms; the 200 ms cover the process start, the trimming and the exit.
#
#   benchmarks/record_step.sh [path/to/zavcli]      (default: build/bin/zavcli)
#
# Exits 1 when a run misses the target, 2 when a tool is missing or the server cannot start.
set -eu

here=$(cd "$(dirname "$0")/.." && pwd)
zavcli=${1:-$here/build/bin/zavcli}
runs=5
for tool in pulseaudio pactl paplay sox; do
    command -v "$tool" > /dev/null 2>&1 || { echo "needs $tool" >&2; exit 2; }
done
[ -x "$zavcli" ] || { echo "no zavcli at $zavcli (build it first)" >&2; exit 2; }

. "$here/tests/cli/pulse-server.sh"
work=$(mktemp -d)
player=
cleanup() {
    if [ -n "$player" ]; then kill "$player" 2> /dev/null || true; fi
    pulse_stop
    rm -rf "$work"
}
trap cleanup EXIT
pulse_start || exit 2
sox -q -n -r 44100 -c 1 -b 16 "$work/played.wav" synth 120 sine 1000 vol 0.3
paplay -d zavsink "$work/played.wav" &
player=$!
pulse_wait_playing || { echo "paplay did not start" >&2; exit 2; }

now_ms() { echo $(($(date +%s%N) / 1000000)); }
profile=$here/tests/data/cli/record-1000ms.zav
missed=0
printf 'run\twall_ms\tstartup_ms\tbudget_ms\tmargin_ms\n'
i=1
while [ $i -le $runs ]; do
    t0=$(now_ms)
    "$zavcli" record "$work/step.wav" --profile "$profile" > "$work/out.txt"
    wall=$(($(now_ms) - t0))
    startup=$(awk -F '\t' '$1 == "StartupMs" { print $2 }' "$work/out.txt")
    budget=$((1000 + 1100 + startup + 200))
    printf '%d\t%d\t%d\t%d\t%d\n' $i $wall "$startup" $budget $((budget - wall))
    [ $wall -le $budget ] || missed=$((missed + 1))
    i=$((i + 1))
done
if [ $missed -gt 0 ]; then
    echo "record_step: $missed of $runs runs over budget" >&2
    exit 1
fi
echo "record_step: every run within interval + 1.1 s + start-up + 200 ms"
