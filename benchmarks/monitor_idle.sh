#!/bin/sh
# CPU used by zavcli monitor while it waits between cycles: the first cycle runs on the demo
# recordings, then the process is sampled for 30 s of waiting. Target: under 1 % of one core.
#   benchmarks/monitor_idle.sh [path/to/zavcli]   (default: build/bin/zavcli)
set -eu
here=$(cd "$(dirname "$0")/.." && pwd)
zavcli=$(realpath "${1:-$here/build/bin/zavcli}")
ex=$here/examples
work=$(mktemp -d)
mon=
trap 'if [ -n "$mon" ]; then kill $mon 2>/dev/null || true; fi; rm -rf "$work"' EXIT INT TERM
cd "$work"
"$zavcli" monitor --profile "$ex/example.zav" --every 10m --count 2 --log idle.tab \
    --step1 "$ex/soundcard.wav" --step2 "$ex/receiver.wav" --step3 "$ex/external.wav" \
    > idle.out 2> idle.err &
mon=$!
i=0
while [ ! -s idle.out ] && [ $i -lt 100 ]; do sleep 0.1; i=$((i + 1)); done
[ -s idle.out ] || { echo "the first cycle did not finish" >&2; cat idle.err >&2; exit 1; }
sleep 1
ticks() { awk '{ print $14 + $15 }' /proc/$mon/stat; }
hz=$(getconf CLK_TCK)
t0=$(ticks); s0=$(date +%s%N)
sleep 30
t1=$(ticks); s1=$(date +%s%N)
awk -v t=$((t1 - t0)) -v hz="$hz" -v ns=$((s1 - s0)) 'BEGIN {
    pct = 100 * (t / hz) / (ns / 1e9)
    printf "CPU between cycles: %.3f %% of one core (%d ticks in %.1f s)\n", pct, t, ns / 1e9
    exit !(pct < 1)
}'
