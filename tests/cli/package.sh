#!/bin/sh
# The Debian package: built by CPack from this build, unpacked into a scratch root, it holds
# both programs, the helper and the desktop files, depends on what shlibdeps found plus the
# run-time programs, and its own zavcli gives the demo report.
set -eu
build=$1
source=$(cd "$2" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cpack --config "$build/CPackConfig.cmake" -B "$work/out" > "$work/cpack.log" 2>&1 ||
    { cat "$work/cpack.log"; exit 1; }
deb=$(ls "$work"/out/zav_*.deb)
depends=$(dpkg-deb -f "$deb" Depends)
for need in libqt6core6 libqt6widgets6 libqt6multimedia6 libc6 xdg-utils shared-mime-info \
            ca-certificates; do
    echo "$depends" | grep -q "$need" || { echo "Depends lacks $need: $depends"; exit 1; }
done
root=$work/root
dpkg-deb -x "$deb" "$root"
for f in bin/zav bin/zavcli libexec/zav/zavcli-audio share/zav/ZAV.pdf share/zav/ZAV.wav \
         share/zav/licence.txt share/applications/zav.desktop share/mime/packages/zav.xml \
         share/icons/hicolor/scalable/apps/zav.svg; do
    [ -s "$root/usr/$f" ] || { echo "missing in the package: /usr/$f"; exit 1; }
done
sh "$source/tests/cli/measure-demo.sh" "$root/usr/bin/zavcli" "$source/examples" \
    "$source/tests/data/cli"
echo ok
