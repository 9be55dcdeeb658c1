#!/bin/sh
# Draws the main window after the demo observation into docs/screenshots/main-window.png,
# under Xvfb so that it looks as on a desktop.  Usage: scripts/screenshot-main-window.sh [BUILD]
set -eu
here=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$here/build}
mkdir -p "$here/docs/screenshots"
QT_QPA_PLATFORM=xcb xvfb-run -a -s "-screen 0 1400x1000x24" \
    "$build/bin/zav_main_window_screenshot" "$here/docs/screenshots/main-window.png"
echo "wrote docs/screenshots/main-window.png"
