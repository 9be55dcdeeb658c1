#!/bin/sh
# The documents beside the built programs; the Debian package of this build unpacked, checked
# by the desktop's own tools, its zavcli headless giving the demo report.
#   package.sh BIN_DIR BUILD_DIR SOURCE_DIR
bin=$1 build=$2 source=$3
. "$(dirname "$0")/harness.sh"

cmp "$bin/licence.txt" "$source/resources/licence.txt"
[ "$(head -c 5 "$bin/ZAV.pdf")" = "%PDF-" ] && tail -c 8 "$bin/ZAV.pdf" | grep -q '%%EOF' &&
    [ "$(grep -ac '/Type /Page$' "$bin/ZAV.pdf")" -ge 2 ] || fail "ZAV.pdf"
check_exit 1 "cannot read" "$bin/zav_make_manual" none.html out.pdf && [ ! -e out.pdf ] || fail "PDF"

cpack --config "$build/CPackConfig.cmake" -B "$work/out" > cpack.log 2>&1 || fail "cpack: $(cat cpack.log)"
deb=$(ls "$work"/out/zav_*.deb) && depends=$(dpkg-deb -f "$deb" Depends)
for need in libqt6core6 libqt6widgets6 libqt6multimedia6 libc6 xdg-utils shared-mime-info ca-certificates; do
    echo "$depends" | grep -q "$need" || fail "Depends lacks $need: $depends"
done
dpkg-deb -x "$deb" root && usr=$work/root/usr
for f in bin/zav bin/zavcli libexec/zav/zavcli-audio share/zav/ZAV.wav share/applications/zav.desktop \
    share/mime/packages/zav.xml share/icons/hicolor/scalable/apps/zav.svg; do
    [ -s "$usr/$f" ] || fail "missing in the package: /usr/$f"
done
cmp "$usr/share/zav/ZAV.wav" "$source/resources/ZAV.wav" && cmp "$usr/share/zav/ZAV.pdf" "$bin/ZAV.pdf" &&
    cmp "$usr/share/zav/licence.txt" "$source/resources/licence.txt" || fail "documents differ"
desktop=$usr/share/applications/zav.desktop && desktop-file-validate "$desktop"
grep -q '^Exec=zav %f$' "$desktop" && grep -q '^MimeType=application/x-zav-profile;$' "$desktop" ||
    fail "desktop entry"
update-mime-database "$usr/share/mime" > /dev/null 2>&1
grep -q 'application/x-zav-profile:\*\.zav' "$usr/share/mime/globs2" || fail "MIME type"
# The installed zavcli's recording helper finds the installed template, then misses the input.
check_exit 1 "No Such Input" "$usr/bin/zavcli" record x.wav --device "No Such Input"

# Without a display, no command but record loads a GUI library (the loader lists them all).
ex=$source/examples
while read -r words; do
    # shellcheck disable=SC2086
    env -u DISPLAY -u WAYLAND_DISPLAY QT_QPA_PLATFORM= LD_DEBUG=files "$usr/bin/zavcli" $words > /dev/null 2> ld.log || true
    grep -q 'file=libQt6Core' ld.log || fail "no loader trace for: $words"
    ! grep -E 'file=[^ ]*(libQt6(Gui|Widgets|OpenGL|Multimedia)|libGL|libEGL|libX11|libxcb)' ld.log | head -3 | grep . ||
        fail "zavcli $words loads GUI libraries"
done << LIST
help
measure --profile $ex/example.zav $ex/soundcard.wav $ex/receiver.wav $ex/external.wav
gps --file $source/tests/data/gps/example-sentences.nmea
LIST
sh "$source/tests/cli/measure-demo.sh" "$usr/bin/zavcli" "$ex" "$source/tests/data/cli"
echo ok
