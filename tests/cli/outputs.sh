#!/bin/sh
# zavcli's commands without a live peer: outputs against expected files byte for byte (in a
# German locale too), against sox and gnuplot, and the exit codes and messages of bad usage
# and unusable input.   outputs.sh ZAVCLI SOURCE_DIR SHARED_DATA_DIR
zavcli=$1
data=$2/tests/data
shared=$3
. "$(dirname "$0")/harness.sh"

# EXPECTED (relative to the tests' data folder) and the arguments, run there.
: > "$work/empty.zav"
while read -r expected args; do
    for locale in C de_DE.UTF-8; do
        # shellcheck disable=SC2086
        (cd "$data/${expected%/*}" && LC_ALL=$locale "$zavcli" $args > "$work/got" 2> /dev/null) || true
        cmp -s "$work/got" "$data/$expected" || { diff -u "$data/$expected" "$work/got" >&2 || true; fail "$args in $locale"; }
    done
done << TABLE
profile/windows-profile.expected.txt profile windows-profile.zav
profile/windows-profile.expected.json profile windows-profile.zav --json
profile/with-antenna.expected.txt profile with-antenna.zav
profile/defaults.expected.txt profile $work/empty.zav
measure/antenna-line.expected antenna antenna-line.tab --at 2.5 --at 1 --at 5 --at 6 --at 0.5
cli/monitor-log.expected.json monitor-summary monitor-log.tab --json
cli/monitor-log.expected.txt monitor-summary monitor-log.tab --column NormQp
gps/example-sentences.expected nmea example-sentences.nmea
TABLE
"$zavcli" nmea - < "$data/gps/example-sentences.nmea" | cmp - "$data/gps/example-sentences.expected"
fixes=$data/gps/example-fixes.nmea
check_exit 0 "" "$zavcli" gps --file "$fixes"
cmp out.txt "$data/gps/example-fixes.expected" && [ "$(cat err.txt)" = "Error: Subscript out of range" ] ||
    fail "gps --file: $(cat out.txt err.txt)"

[ "$("$zavcli" help | grep -c 'zavcli [a-z]')" -ge 11 ] || fail "help lacks commands"
"$zavcli" antenna --help | grep -q "usage: zavcli antenna" || fail "antenna --help"
check_refused 2 "unknown command" "$zavcli" frobnicate
check_refused 2 "no such profile: no-such-profile.zav" "$zavcli" profile no-such-profile.zav
check_refused 2 "Error: Overflow" "$zavcli" gps --file "$fixes" --speed 5000000
check_exit 1 "" "$zavcli" gps --file "$fixes.none"
check_exit 1 "" "$zavcli" gps --device /nonexistent/ttyQ9 --timeout 1
check_exit 1 "Update site not responding properly. HTTP status=0 (connection refused by 127.0.0.1:1)" \
    sh -c '"$0" update --base-url http://127.0.0.1:1/ >&2' "$zavcli"
printf '1\t1\n3\t3\n2\t2\n4\t4\n' > unsorted.tab
check_refused 1 "Antenna File not sorted, load aborted." "$zavcli" antenna unsorted.tab --at 2
grep -q "ZAV Antenna File error:" err.txt || fail "unsorted: $(cat err.txt)"
printf '1\t10\n2\t20\n3\t30\n' > good.tab
sox -q -n -r 8000 -b 16 -c 1 sine.wav synth 0.5 sine 1000
sox -q -n -r 8000 -b 16 -c 2 stereo.wav synth 0.1 sine 440
printf 'RIFF\044\0\0\0WAVEfmt \020\0\0\0\001\0\001\0\100\037\0\0\200\076\0\0\002\0\020\0data\0\0\0\0' > empty.wav
check_refused 1 "Unsupported WAVE file format." "$zavcli" analyse stereo.wav
check_refused 1 "no samples" "$zavcli" analyse empty.wav
check_refused 1 "cannot open" "$zavcli" analyse absent.wav
# Bad usage: exit 2, nothing printed.
refusals 2 "" "$zavcli" "help nothing; profile; profile a.zav b.zav; profile --xml a.zav;
    update --base-url; update extra; antenna good.tab; antenna --at 2; antenna good.tab --at;
    antenna good.tab --at two; antenna good.tab good.tab --at 2; antenna good.tab --near 2;
    analyse; analyse sine.wav --frequency; analyse sine.wav --frequency seven;
    analyse sine.wav --frobnicate; analyse sine.wav sine.wav"
check_refused 2 "usage: zavcli gps" "$zavcli" gps
refusals 2 "usage: zavcli gps" "$zavcli gps" "--file; --file $fixes --device 1;
    --file $fixes --acc x; --file $fixes --timeout 0; --file $fixes --bogus 1"

# Inputs that are not files: refused with the reason, never read or waited on. A profile that
# names one as its antenna file still opens, with the name cleared.
mkdir folder
mkfifo "$work/pipe"
for input in "$work/folder:it is a folder" "/dev/zero:it is not a regular file" \
    "$work/pipe:it is not a regular file"; do
    path=${input%%:*} reason=${input#*:}
    check_refused 1 "cannot open $path: $reason" "$zavcli" analyse "$path"
    printf '[conditions]\r\nAntFilename=%s\r\nTester=T\r\n' "$path" > named.zav
    check_exit 0 "Error: cannot open antenna file $path: $reason." "$zavcli" profile named.zav
    grep -qx 'Tester	T' out.txt && grep -qx 'AntFilename	' out.txt || fail "named $path: $(cat out.txt)"
done
refusals 1 "zavcli: cannot read $work/folder: it is a folder" "$zavcli" "nmea $work/folder; gps --file $work/folder"
# A pipe nobody writes to and a device without line ends: gps ends at its time-out, empty.
for input in "$work/pipe" /dev/zero; do
    check_refused 1 "zavcli gps: no fix met the accuracy before the time-out" \
        "$zavcli" gps --file "$input" --timeout 0.5
done

# analyse and export against sox, an independent writer and reader of the same files, and the
# real gnuplot running the exported script.
export TZ=UTC
sox -q -D -n -r 48000 -b 16 -c 1 tone.wav synth 2 sine 1000 vol 0.5
"$zavcli" analyse tone.wav > analysed
value() { awk -F '\t' -v k="$1" '$1 == k { print $2 }' analysed; }
sox tone.wav -n stats 2> stats
# zavcli's Pk is scaled to read a sine's RMS: times √2 it is the crest sox reports.
awk -v r="$(value Rms)" -v p="$(value Pk)" '
    /^RMS lev dB/ { rms = 10 ^ ($4 / 20) } /^Pk lev dB/ { pk = 10 ^ ($4 / 20) }
    END { q = p * sqrt(2) / pk; exit !(r / rms > 0.998 && r / rms < 1.002 && q > 0.995 && q < 1.005) }' stats &&
    [ "$(value SampleRate) $(value Samples)" = "48000 96000" ] ||
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
[ "$(head -n 1 table.tab)" = "$(printf 'Time\tNormalisedVoltage\r')" ] && [ "$(wc -l < table.tab)" = 8001 ] &&
    [ "$(grep -c "$(printf '\r')\$" table.tab)" = 8001 ] || fail "table header or rows"
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

# Unusable recordings leave no output file.
check_exit 1 "no samples" "$zavcli" export gnuplot empty.wav empty.plt
check_exit 1 "ZAV: Unsupported WAVE file format." "$zavcli" export table stereo.wav stereo.tab
check_exit 1 "cannot open" "$zavcli" export table missing.wav
check_exit 1 "cannot write" "$zavcli" export table "$rec" no/such/dir.tab
[ ! -e empty.plt ] && [ ! -e stereo.tab ] || fail "an output for an unusable recording"
check_exit 2 "gnuplot or table" "$zavcli" export csv "$rec"
check_exit 2 "usage" "$zavcli" export table "$rec" a b
check_exit 2 "double quote" "$zavcli" export gnuplot "$rec" --title 'say "hi"'

# Every real capture, NUL bytes and glued sentences included: events, no crash, no hang.
need_dir "$shared/nmea"
for f in "$shared"/nmea/*.nmea; do
    [ "$("$zavcli" nmea "$f" | wc -l)" -gt 100 ] || fail "nmea $f"
done
echo "ok"
