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

# Limits off: results shown; logging, saving or posting them is refused before any work.
"$zavcli" measure --profile example.zav --limits off soundcard.wav receiver.wav external.wav > off.txt
grep -q '^RMS Rx power (dBm)	-' off.txt
for output in "--log off.tab" "--report off.txt" "--post"; do
    rc=0
    # shellcheck disable=SC2086
    "$zavcli" measure --profile example.zav --limits off $output \
        soundcard.wav receiver.wav external.wav > off.out 2> off.err || rc=$?
    [ "$rc" = 2 ] && [ ! -e off.tab ] && [ ! -s off.out ] && grep -q 'limits off' off.err
done

# A mistyped profile: said so, exit 2, nothing measured.
rc=0
"$zavcli" measure --profile exmaple.zav soundcard.wav receiver.wav external.wav \
    > typo.out 2> typo.err || rc=$?
[ "$rc" = 2 ] && [ ! -s typo.out ] && grep -q 'no such profile: exmaple.zav' typo.err

# An unusable sound-card file: its message, no report built on a missing column, exit 1.
printf 'RIFF....WAVEjunk' > junk.wav
rc=0
"$zavcli" measure --profile example.zav junk.wav receiver.wav external.wav \
    > junk.out 2> junk.err || rc=$?
[ "$rc" = 1 ] && [ ! -s junk.out ]
grep -q 'Unsupported WAVE file format.' junk.err && grep -q 'junk.wav gave no measurement' junk.err

# A recording cut short: analysed over what it holds, with a warning.
head -c 2044 external.wav > short.wav
rc=0
"$zavcli" measure --profile example.zav soundcard.wav receiver.wav short.wav \
    > short.out 2> short.err || rc=$?
grep -q 'shorter than its header claims: 1000 of' short.err

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
