#!/bin/sh
# zavcli analyse and export against sox, an independent writer and reader of the same files: a
# 1 kHz tone sox writes reads the RMS and peak of sox's own "stats"; the exported table and
# gnuplot script of a noise recording hold sox's reading of its samples, and the real gnuplot
# runs the script. Bad input gives the program's messages, exit codes and no output file.
#   sox.sh ZAVCLI
zavcli=$1
. "$(dirname "$0")/harness.sh"
export TZ=UTC

sox -q -D -n -r 48000 -b 16 -c 1 tone.wav synth 2 sine 1000 vol 0.5
"$zavcli" analyse tone.wav > analysed
value() { awk -F '\t' -v k="$1" '$1 == k { print $2 }' analysed; }
[ "$(value SampleRate) $(value Samples)" = "48000 96000" ] || fail "analyse: $(cat analysed)"
sox tone.wav -n stats 2> stats
# zavcli's Pk is scaled to read a sine's RMS: times √2 it is the crest sox reports.
awk -v r="$(value Rms)" -v p="$(value Pk)" '
    /^RMS lev dB/ { rms = 10 ^ ($4 / 20) } /^Pk lev dB/ { pk = 10 ^ ($4 / 20) }
    END { q = p * sqrt(2) / pk; exit !(r / rms > 0.998 && r / rms < 1.002 && q > 0.995 && q < 1.005) }' stats ||
    fail "analyse $(cat analysed) against sox $(cat stats)"

rec=$work/noise-8000-16bit-1s.wav
sox -q -R -D -n -r 8000 -b 16 -c 1 "$rec" synth 1 whitenoise vol 0.9
touch -d "2024-05-01 12:34:56" "$rec"
sox "$rec" -t dat - | tr -d '\r' | grep -v '^;' > sox.dat
# agree FILE FIRST LAST TOLERANCE: lines FIRST..LAST of FILE are sox's time and value.
agree() {
    sed -n "$2,$3p" "$1" | tr -d '\r' | paste - sox.dat | awk -v e="$4" '
        NF != 4 || $1 - $3 > e || $3 - $1 > e || $2 - $4 > e || $4 - $2 > e { print "line " NR ": " $0; bad = 1; exit }
        END { exit bad }' || fail "$1 differs from sox"
}

# The table: a header, 8000 CR LF rows, each value sox's to 6 decimals.
"$zavcli" export table "$rec" table.tab
[ "$(head -n 1 table.tab)" = "$(printf 'Time\tNormalisedVoltage\r')" ] || fail "table header"
[ "$(wc -l < table.tab)" = 8001 ] && [ "$(grep -c "$(printf '\r')\$" table.tab)" = 8001 ] || fail "table rows"
agree table.tab 2 8001 5.1e-7

# The script, to standard output and to a file alike.
"$zavcli" export gnuplot "$rec" --title "Receiver Internal Noise" > stdout.plt
"$zavcli" export gnuplot --title "Receiver Internal Noise" "$rec" file.plt
cmp stdout.plt file.plt || fail "standard output and file differ"
grep -q "^set title \"ZAV: Receiver Internal Noise 20240501123456\"$(printf '\r')\$" file.plt || fail "title line"
agree file.plt 2 8001 1e-9
gnuplot -e "set terminal dumb" file.plt > plot.txt 2> plot.err || fail "gnuplot: $(cat plot.err)"
[ ! -s plot.err ] && grep -q "ZAV: Receiver Internal Noise 20240501123456" plot.txt || fail "gnuplot: $(cat plot.err)"
"$zavcli" export gnuplot "$rec" | grep -q '"ZAV: External Noise 20240501123456"' || fail "default title"

printf 'RIFF\044\0\0\0WAVEfmt \020\0\0\0\001\0\001\0\100\037\0\0\200\076\0\0\002\0\020\0data\0\0\0\0' > empty.wav
check_exit 1 "no samples" "$zavcli" export gnuplot empty.wav empty.plt
sox -q -n -r 8000 -b 16 -c 2 stereo.wav synth 0.1 sine 440
check_exit 1 "ZAV: Unsupported WAVE file format." "$zavcli" export table stereo.wav stereo.tab
[ ! -e empty.plt ] && [ ! -e stereo.tab ] || fail "an output for an unusable recording"
check_exit 1 "cannot open" "$zavcli" export table missing.wav
check_exit 1 "cannot write" "$zavcli" export table "$rec" no/such/dir.tab
check_exit 2 "gnuplot or table" "$zavcli" export csv "$rec"
check_exit 2 "usage" "$zavcli" export table "$rec" a b
check_exit 2 "double quote" "$zavcli" export gnuplot "$rec" --title 'say "hi"'
echo "zavcli analyse and export agree with sox and gnuplot"
