#!/bin/sh
# zavcli is headless: with no display, its commands that need no sound card run without
# loading any Qt Gui, Widgets, OpenGL, X11 or xcb library (the dynamic loader lists every
# library it opens, plugins included).
set -eu
zavcli=$1
source=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
unset DISPLAY WAYLAND_DISPLAY
export QT_QPA_PLATFORM=

ex=$source/examples
nmea=$source/tests/data/gps/example-sentences.nmea
i=0
while IFS='|' read -r words; do
    i=$((i + 1))
    # shellcheck disable=SC2086
    LD_DEBUG=files "$zavcli" $words > /dev/null 2> "$work/$i.log" || true
    grep -q 'file=libQt6Core' "$work/$i.log" || { echo "no loader trace for: $words"; exit 1; }
    if grep -E 'file=[^ ]*(libQt6(Gui|Widgets|OpenGL|Multimedia)|libGL|libEGL|libX11|libxcb)' \
            "$work/$i.log" | head -3 | grep .; then
        echo "zavcli $words loads GUI libraries"
        exit 1
    fi
done <<EOF2
help
analyse $ex/external.wav
measure --profile $ex/example.zav $ex/soundcard.wav $ex/receiver.wav $ex/external.wav
profile $ex/example.zav
antenna $ex/antenna.tab --at 7
nmea $nmea
gps --file $nmea
update --base-url http://127.0.0.1:1/
EOF2
echo ok
