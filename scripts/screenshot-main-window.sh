#!/bin/sh
# Draws the main window into docs/screenshots/ under Xvfb, so that it looks as on a desktop:
#   main-window.png              after the demo observation, at its natural size
#   main-window-1366x768.png     on a 1366x768 laptop screen (the height a title bar and a
#                                panel leave: 690 logical pixels)
#   main-window-150percent.png   on 1920x1080 at 150 % scaling (1280x650 logical pixels)
#   verdict-in-words.png         a step's judgement in the status bar and the cell's tooltip
# Usage: scripts/screenshot-main-window.sh [BUILD]
set -eu
here=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$here/build}
out=$here/docs/screenshots
mkdir -p "$out"
shot() { # SCREEN OUT.png [ARGS...]
    screen=$1
    shift
    QT_QPA_PLATFORM=xcb xvfb-run -a -s "-screen 0 ${screen}x24" \
        "$build/bin/zav_screenshot" main "$@"
}
shot 1400x1000 "$out/main-window.png"
shot 1366x768 "$out/main-window-1366x768.png" 1366x690
QT_SCALE_FACTOR=1.5 shot 1920x1080 "$out/main-window-150percent.png" 1280x650
shot 1366x768 "$out/verdict-in-words.png" 1366x690 verdict
echo "wrote docs/screenshots/main-window*.png and verdict-in-words.png"
