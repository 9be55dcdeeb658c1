#!/bin/sh
# zavcli export end to end: sox writes a noise recording and reads its samples back in its own
# text format, an independent reading that the table and the script must agree with; the
# real gnuplot runs the script; bad input gives the program's messages and exit codes.
#   export.sh ZAVCLI
set -eu
zavcli=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT INT TERM
fail() { echo "FAIL: $*" >&2; exit 1; }
export TZ=UTC

rec=$work/noise-8000-16bit-1s.wav
sox -q -R -D -n -r 8000 -b 16 -c 1 "$rec" synth 1 whitenoise vol 0.9
touch -d "2024-05-01 12:34:56" "$rec"
sox "$rec" -t dat - | tr -d '\r' | grep -v '^;' >"$work/sox.dat"

# The table: header, 8000 rows ending at 0.999875, CR LF, each value sox's to 6 decimals.
"$zavcli" export table "$rec" "$work/table.tab" || fail "table refused"
[ "$(head -n 1 "$work/table.tab")" = "$(printf 'Time\tNormalisedVoltage\r')" ] || fail "table header"
[ "$(wc -l <"$work/table.tab")" -eq 8001 ] || fail "table rows"
[ "$(grep -c "$(printf '\r')\$" "$work/table.tab")" -eq 8001 ] || fail "table line ends"
tail -n 1 "$work/table.tab" | grep -q '^0\.999875	' || fail "last time $(tail -n 1 "$work/table.tab")"
tail -n +2 "$work/table.tab" | tr -d '\r' | paste - "$work/sox.dat" | awk '
    { if (NF != 4) { print "row " NR ": " $0; bad = 1; exit }
      if ($1 - $3 > 5.1e-7 || $3 - $1 > 5.1e-7 || $2 - $4 > 5.1e-7 || $4 - $2 > 5.1e-7) {
          print "row " NR ": " $0; bad = 1; exit } }
    END { exit bad }' || fail "table differs from sox"

# The script, to standard output and to a file alike; its data lines are sox's samples.
"$zavcli" export gnuplot "$rec" --title "Receiver Internal Noise" >"$work/stdout.plt" ||
    fail "script refused"
"$zavcli" export gnuplot --title "Receiver Internal Noise" "$rec" "$work/file.plt" ||
    fail "script to file refused"
cmp "$work/stdout.plt" "$work/file.plt" || fail "standard output and file differ"
grep -q "^set title \"ZAV: Receiver Internal Noise 20240501123456\"$(printf '\r')\$" \
    "$work/file.plt" || fail "title line"
sed -n '2,8001p' "$work/file.plt" | tr -d '\r' | paste - "$work/sox.dat" | awk '
    { if ($1 - $3 > 1e-9 || $3 - $1 > 1e-9 || $2 - $4 > 1e-11 || $4 - $2 > 1e-11) {
          print "line " NR + 1 ": " $0; bad = 1; exit } }
    END { exit bad }' || fail "script data differ from sox"
gnuplot -e "set terminal dumb" "$work/file.plt" >"$work/plot.txt" 2>"$work/plot.err" ||
    fail "gnuplot refused the script: $(cat "$work/plot.err")"
[ ! -s "$work/plot.err" ] || fail "gnuplot said: $(cat "$work/plot.err")"
grep -q "ZAV: Receiver Internal Noise 20240501123456" "$work/plot.txt" || fail "plot title"
"$zavcli" export gnuplot "$rec" | grep -q '"ZAV: External Noise 20240501123456"' ||
    fail "default title"

# Bad input: exit 1 with a message, and no output file.
expect() { # CODE MESSAGE ARGS...
    code=$1 message=$2
    shift 2
    rc=0
    "$zavcli" export "$@" >"$work/out" 2>"$work/err" || rc=$?
    [ "$rc" -eq "$code" ] || fail "export $*: exit $rc, not $code"
    grep -qF "$message" "$work/err" || fail "export $*: said $(cat "$work/err")"
}
printf 'RIFF\044\0\0\0WAVEfmt \020\0\0\0\001\0\001\0\100\037\0\0\200\076\0\0\002\0\020\0data\0\0\0\0' \
    >"$work/empty.wav"
expect 1 "no samples" gnuplot "$work/empty.wav" "$work/empty.plt"
[ ! -e "$work/empty.plt" ] || fail "a script for no samples"
sox -q -n -r 8000 -b 16 -c 2 "$work/stereo.wav" synth 0.1 sine 440
expect 1 "ZAV: Unsupported WAVE file format." table "$work/stereo.wav" "$work/stereo.tab"
[ ! -e "$work/stereo.tab" ] || fail "a table for an unusable file"
expect 1 "cannot open" table "$work/missing.wav"
expect 1 "cannot write" table "$rec" "$work/no/such/dir.tab"
expect 2 "gnuplot or table" csv "$rec"
expect 2 "usage" table "$rec" a b
expect 2 "double quote" gnuplot "$rec" --title 'say "hi"'
echo "zavcli export agrees with sox and gnuplot"
