#!/bin/sh
# zavcli analyse against sox, an independent writer and meter of the same file: a 1 kHz
# tone sox writes reads the RMS and peak that sox's own "stats" report; and the one real
# file from another writer whose layout the reader accepts is read whole.
#   analyse-sox.sh ZAVCLI SHARED_WAV_DIR
set -eu
zavcli=$1
shared=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT INT TERM
fail() { echo "FAIL: $*" >&2; exit 1; }

tone=$work/sine-1000Hz-48000-16bit-2s.wav
sox -q -D -n -r 48000 -b 16 -c 1 "$tone" synth 2 sine 1000 vol 0.5
"$zavcli" analyse "$tone" >"$work/out" || fail "tone refused"
value() { awk -F '\t' -v k="$1" '$1 == k { print $2 }' "$work/out"; }
[ "$(value SampleRate)" = 48000 ] || fail "SampleRate $(value SampleRate)"
[ "$(value Samples)" = 96000 ] || fail "Samples $(value Samples)"
sox "$tone" -n stats 2>"$work/stats"
soxRms=$(awk '/^RMS lev dB/ { print 10 ^ ($4 / 20) }' "$work/stats")
soxPk=$(awk '/^Pk lev dB/ { print 10 ^ ($4 / 20) }' "$work/stats")
# zavcli's Pk is scaled to read a sine's RMS: times √2 it is the crest sox reports.
awk -v r="$(value Rms)" -v s="$soxRms" 'BEGIN { exit !(r / s > 0.998 && r / s < 1.002) }' ||
    fail "Rms $(value Rms) against sox $soxRms"
awk -v p="$(value Pk)" -v s="$soxPk" 'BEGIN { q = p * sqrt(2) / s; exit !(q > 0.995 && q < 1.005) }' ||
    fail "Pk $(value Pk) against sox peak $soxPk"

"$zavcli" analyse "$shared/goaudio_listinfo.wav" >"$work/out" || fail "listinfo refused"
[ "$(value Samples)" = 88200 ] || fail "listinfo Samples $(value Samples)"
echo "zavcli analyse agrees with sox"
