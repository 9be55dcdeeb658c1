#!/bin/sh
# Time from starting `zav` to its main window on the screen, under Xvfb: five runs, median.
# Target: under 0.5 s.   benchmarks/startup.sh [path/to/zav]   (default: build/bin/zav)
set -eu
here=$(cd "$(dirname "$0")/.." && pwd)
zav=$(realpath "${1:-$here/build/bin/zav}")
[ -x "$zav" ] || { echo "no zav at $zav (build it first)" >&2; exit 2; }
command -v xvfb-run >/dev/null || { echo "needs xvfb-run" >&2; exit 2; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT INT TERM
cd "$work"
# A home of its own: closing saves the settings and the default profile.
export XDG_CONFIG_HOME="$work/config" XDG_RUNTIME_DIR="$work/run" QT_QPA_PLATFORM=xcb
mkdir -m 700 "$work/run"
xvfb-run -a -s "-screen 0 1400x1000x24" sh -c '
    for i in 1 2 3 4 5 6; do
        t0=$(date +%s%N)
        ZAV_QUIT_WHEN_SHOWN=1 "$0" >/dev/null 2>>zav.err || { echo "zav failed:" >&2; cat zav.err >&2; exit 1; }
        t1=$(date +%s%N)
        [ $i -gt 1 ] && echo $(( (t1 - t0) / 1000000 ))   # the first run warms the caches
    done' "$zav" > times
[ "$(wc -l < times)" = 5 ] || exit 1
median=$(sort -n times | sed -n 3p)
echo "zav start to shown window: median ${median} ms of 5 runs (target < 500 ms)"
[ "$median" -lt 500 ]
