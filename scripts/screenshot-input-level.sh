#!/bin/sh
# Draws the input level meter reading a private PulseAudio server's source into
# docs/screenshots/input-level.png, under Xvfb.  Usage: scripts/screenshot-input-level.sh [BUILD]
set -eu
here=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$here/build}
mkdir -p "$here/docs/screenshots"
QT_QPA_PLATFORM=xcb xvfb-run -a -s "-screen 0 1024x768x24" \
    "$build/bin/zav_screenshot" input-level "$here/docs/screenshots/input-level.png"
echo "wrote docs/screenshots/input-level.png"
