#!/bin/sh
# Whole-process comparison: `zavcli analyse` against `sox FILE -n stats` on a 10-minute,
# 48 kHz, 16-bit noise recording, five runs each, medians and their ratio; zavcli's peak
# memory on a 1-second and a 1-hour file (it must not grow with the length); and the
# start-up of `zavcli help`, time and peak memory, which shows what the headless tool loads.
#
#   benchmarks/analyse_vs_sox.sh [path/to/zavcli]      (default: build/bin/zavcli)
#
# Targets: zavcli at least 1.5 times as fast as sox stats; peak memory under 20 MB.
# Exits 1 when a target is missed, 2 when a tool is missing.
set -eu

here=$(cd "$(dirname "$0")/.." && pwd)
zavcli=${1:-$here/build/bin/zavcli}
runs=5

for tool in sox /usr/bin/time; do
    command -v "$tool" >/dev/null 2>&1 || { echo "needs $tool" >&2; exit 2; }
done
[ -x "$zavcli" ] || { echo "no zavcli at $zavcli (build it first)" >&2; exit 2; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT INT TERM
long=$work/noise-48000Hz-16bit-600s.wav
short=$work/noise-48000Hz-16bit-1s.wav
hour=$work/noise-48000Hz-16bit-3600s.wav
sox -q -n -r 48000 -b 16 -c 1 "$long" synth 600 whitenoise vol 0.3
sox -q -n -r 48000 -b 16 -c 1 "$short" synth 1 whitenoise vol 0.3
sox -q -n -r 48000 -b 16 -c 1 "$hour" synth 3600 whitenoise vol 0.3
cat "$long" >/dev/null # both tools read it from the page cache

now_ns() { date +%s%N; }

# Prints the median wall time in seconds of $runs runs of the given command.
median_seconds() {
    i=0
    : >"$work/times"
    while [ $i -lt $runs ]; do
        t0=$(now_ns)
        "$@" >/dev/null 2>&1
        t1=$(now_ns)
        echo $(( t1 - t0 )) >>"$work/times"
        i=$((i + 1))
    done
    sort -n "$work/times" | awk -v n=$runs 'NR == int((n + 1) / 2) { printf "%.3f\n", $1 / 1e9 }'
}

peak_kib() {
    /usr/bin/time -v "$@" 2>&1 >/dev/null | awk -F: '/Maximum resident set size/ { gsub(/ /, "", $2); print $2 }'
}

"$zavcli" analyse "$long" >/dev/null || { echo "zavcli analyse failed on $long" >&2; exit 1; }

zav_s=$(median_seconds "$zavcli" analyse "$long")
sox_s=$(median_seconds sox "$long" -n stats)
ratio=$(awk -v a="$sox_s" -v b="$zav_s" 'BEGIN { printf "%.2f", a / b }')
mem_long=$(peak_kib "$zavcli" analyse "$long")
mem_short=$(peak_kib "$zavcli" analyse "$short")
mem_hour=$(peak_kib "$zavcli" analyse "$hour")
help_s=$(median_seconds "$zavcli" help)
mem_help=$(peak_kib "$zavcli" help)

echo "file: 600 s, 48000 Hz, 16-bit mono noise ($(wc -c <"$long") bytes), median of $runs runs"
printf '%-28s %8s s\n' "zavcli analyse" "$zav_s" "sox stats" "$sox_s"
echo "sox / zavcli time ratio:     $ratio (target >= 1.5)"
echo "zavcli peak memory, 600 s:   $mem_long KiB"
echo "zavcli peak memory, 1 s:     $mem_short KiB"
echo "zavcli peak memory, 3600 s:  $mem_hour KiB (target < 20 MB)"
echo "zavcli help start-up:        $help_s s, peak memory $mem_help KiB"

status=0
awk -v r="$ratio" 'BEGIN { exit !(r >= 1.5) }' || { echo "MISSED: speed ratio"; status=1; }
for mem in "$mem_short" "$mem_long" "$mem_hour"; do
    [ "$mem" -lt 20000 ] || { echo "MISSED: peak memory $mem KiB"; status=1; }
done
exit $status
