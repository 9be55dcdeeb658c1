#!/bin/sh
# Draws the plot window on a synthetic recording into docs/screenshots/plot-window.png (the
# waveform) and plot-window-spectrum.png, under Xvfb so that it looks as on a desktop.
# Usage: scripts/screenshot-plot-window.sh [BUILD]
set -eu
here=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$here/build}
mkdir -p "$here/docs/screenshots"
QT_QPA_PLATFORM=xcb xvfb-run -a -s "-screen 0 1400x1000x24" \
    "$build/bin/zav_screenshot" plot "$here/docs/screenshots/plot-window.png" \
    "$here/docs/screenshots/plot-window-spectrum.png"
echo "wrote docs/screenshots/plot-window.png and plot-window-spectrum.png"
