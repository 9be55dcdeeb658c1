#!/bin/sh
# zavcli measure end to end on the demo recordings: the report, the data log and the saved
# report byte for byte, the exit codes, and a run that cannot give results.
set -eu
zavcli=$1
examples=$2
expected=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export TZ=UTC
for f in soundcard receiver external; do cp "$examples/$f.wav" "$work/"; done
cp "$examples/example.zav" "$work/"
# The observation is stamped with the external recording's time.
touch -d '2026-11-21 09:30:15 UTC' "$work/external.wav"
cd "$work"
"$zavcli" measure --profile example.zav --log log.tab --report saved.txt \
    soundcard.wav receiver.wav external.wav > report.txt
# The expected files name the version as @VERSION@: the unit tests check the version itself.
version=$(sed -n '2s/^Version\t\([0-9.]*\).*/\1/p' report.txt)
sed "s/@VERSION@/$version/" "$expected/demo-report.txt" | cmp report.txt -
printf '\r\n' | cat report.txt - | cmp - saved.txt
sed "s/@VERSION@/$version/" "$expected/demo-log.tab" | cmp log.tab -
# A second run appends one row, without a second header.
"$zavcli" measure --profile example.zav --log log.tab soundcard.wav receiver.wav external.wav > /dev/null
[ "$(grep -c '^Program' log.tab)" = 1 ] && [ "$(grep -c '^ZAV' log.tab)" = 2 ]

# Limits off: results shown, but nothing may be logged; the exit code says so.
rc=0
"$zavcli" measure --profile example.zav --limits off --log off.tab \
    soundcard.wav receiver.wav external.wav > off.txt 2> off.err || rc=$?
[ "$rc" = 1 ] && [ ! -e off.tab ] && grep -q 'no data-log row' off.err
grep -q '^RMS Rx power (dBm)	-' off.txt

# The recordings in the wrong order: step 2 is judged, step 3 never runs, exit 1.
rc=0
"$zavcli" measure --profile example.zav --json external.wav soundcard.wav receiver.wav \
    > wrong.json 2> wrong.err || rc=$?
[ "$rc" = 1 ]
grep -q 'Check voltage range.' wrong.err
grep -q '"ran":false' wrong.json

# Bad usage.
rc=0; "$zavcli" measure soundcard.wav receiver.wav > /dev/null 2>&1 || rc=$?; [ "$rc" = 2 ]
rc=0; "$zavcli" measure --limits maybe a b c > /dev/null 2>&1 || rc=$?; [ "$rc" = 2 ]
rc=0; "$zavcli" measure nosuch.wav receiver.wav external.wav > /dev/null 2>&1 || rc=$?; [ "$rc" = 1 ]
echo ok
