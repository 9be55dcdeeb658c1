#!/bin/sh
# The licence and the manual beside the programs, the manual tool's refusal of a missing
# source, and what an install puts where: both programs and the sound-card helper, the
# documents and template they find there, a valid desktop entry, the icon and a MIME type
# the shared-mime-info tool accepts.
set -eu
bin=$1
build=$2
source=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmp "$bin/licence.txt" "$source/resources/licence.txt"
[ "$(head -c 5 "$bin/ZAV.pdf")" = "%PDF-" ]
pages=$(grep -ac '/Type /Page$' "$bin/ZAV.pdf" || true)
[ "$pages" -ge 2 ] || { echo "manual has $pages pages"; exit 1; }
tail -c 8 "$bin/ZAV.pdf" | grep -q '%%EOF'

rc=0
"$bin/zav_make_manual" "$work/none.html" "$work/out.pdf" 2> "$work/err" || rc=$?
[ "$rc" = 1 ] && [ ! -e "$work/out.pdf" ] && grep -q 'cannot read' "$work/err"
rc=0
"$bin/zav_make_manual" > /dev/null 2>&1 || rc=$?
[ "$rc" = 2 ]

cmake --install "$build" --prefix "$work/prefix" > /dev/null
share=$work/prefix/share
[ -x "$work/prefix/bin/zav" ] && [ -x "$work/prefix/bin/zavcli" ]
[ -x "$work/prefix/libexec/zav/zavcli-audio" ]
cmp "$share/zav/ZAV.wav" "$source/resources/ZAV.wav"
desktop-file-validate "$share/applications/zav.desktop"
# The installed zavcli hands recording to its helper, which finds the installed template and
# only then misses the input asked for.
rc=0
"$work/prefix/bin/zavcli" record "$work/x.wav" --device "No Such Input" 2> "$work/rec.err" || rc=$?
[ "$rc" = 1 ] && grep -q 'No Such Input' "$work/rec.err" || { cat "$work/rec.err"; exit 1; }
cmp "$share/zav/licence.txt" "$source/resources/licence.txt"
cmp "$share/zav/ZAV.pdf" "$bin/ZAV.pdf"
grep -q '^Exec=zav %f$' "$share/applications/zav.desktop"
grep -q '^MimeType=application/x-zav-profile;$' "$share/applications/zav.desktop"
[ -s "$share/icons/hicolor/scalable/apps/zav.svg" ]
if command -v update-mime-database > /dev/null; then
    update-mime-database "$share/mime" > /dev/null 2>&1
    grep -q 'application/x-zav-profile:\*\.zav' "$share/mime/globs2"
fi
echo ok
