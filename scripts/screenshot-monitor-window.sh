#!/bin/sh
# Draws the Monitor window after a short real run into docs/screenshots/monitor-window.png,
# under Xvfb so that it looks as on a desktop.
# Usage: scripts/screenshot-monitor-window.sh [BUILD]
set -eu
here=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$here/build}
mkdir -p "$here/docs/screenshots"
QT_QPA_PLATFORM=xcb xvfb-run -a -s "-screen 0 1400x1000x24" \
    "$build/bin/zav_screenshot" monitor "$here/docs/screenshots/monitor-window.png"
echo "wrote docs/screenshots/monitor-window.png"
