#!/bin/sh
# zavcli's commands on files, pipes and pseudo-terminals: outputs against expected files (in a
# German locale too), sox and gnuplot; bad usage and unusable input.
#   outputs.sh ZAVCLI SOURCE_DIR SHARED_DIR
# shellcheck disable=SC2086 # lists of words, split on purpose
zavcli=$1 data=$2/tests/data shared=$3
. "$(dirname "$0")/harness.sh"

: > "$work/empty.zav"
while read -r expected args; do
    for locale in C de_DE.UTF-8; do
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
check_refused 2 "unknown command" "$zavcli" frobnicate
check_refused 2 "no such profile: no-such-profile.zav" "$zavcli" profile no-such-profile.zav
check_refused 2 "Error: Overflow" "$zavcli" gps --file "$fixes" --speed 5000000
refusals 1 "" "$zavcli gps" "--file $fixes.none; --device /nonexistent/ttyQ9 --timeout 1"
check_exit 1 "Update site not responding properly. HTTP status=0 (connection refused by 127.0.0.1:1)" \
    sh -c '"$0" update --base-url http://127.0.0.1:1/ >&2' "$zavcli"
printf '1\t1\n3\t3\n2\t2\n4\t4\n' > unsorted.tab
check_refused 1 "Antenna File not sorted, load aborted." "$zavcli" antenna unsorted.tab --at 2
grep -q "ZAV Antenna File error:" err.txt || fail "unsorted: $(cat err.txt)"
printf '1\t10\n2\t20\n3\t30\n' > good.tab
sox -q -n -r 8000 -b 16 -c 1 sine.wav synth 0.5 sine 1000
sox -q -n -r 8000 -b 16 -c 2 stereo.wav synth 0.1 sine 440
printf 'RIFF\044\0\0\0WAVEfmt \020\0\0\0\001\0\001\0\100\037\0\0\200\076\0\0\002\0\020\0data\0\0\0\0' > empty.wav
# Unusable recordings: refused by both readers, no output file left. Then bad usage.
for f in "stereo.wav:Unsupported WAVE file format." "empty.wav:no samples" \
    "absent.wav:cannot open"; do
    check_refused 1 "${f#*:}" "$zavcli" analyse "${f%%:*}"
    check_exit 1 "${f#*:}" "$zavcli" export table "${f%%:*}" got.tab
    [ ! -e got.tab ] || fail "export of ${f%%:*} left a file"
done
refusals 2 "" "$zavcli" "help nothing; profile; profile a.zav b.zav; profile --xml a.zav;
    update --base-url; update extra; antenna good.tab; antenna --at 2; antenna good.tab --at;
    antenna good.tab --at two; antenna good.tab good.tab --at 2; antenna good.tab --near 2;
    analyse; analyse sine.wav --frequency; analyse sine.wav --frequency seven;
    analyse sine.wav --frobnicate; analyse sine.wav sine.wav; export csv sine.wav;
    export table sine.wav a b"
check_refused 2 "double quote" "$zavcli" export gnuplot sine.wav --title 'say "hi"'
check_refused 2 "usage: zavcli gps" "$zavcli" gps
refusals 2 "usage: zavcli gps" "$zavcli gps" "--file; --file $fixes --device 1;
    --file $fixes --acc x; --file $fixes --timeout 0; --file $fixes --bogus 1"

# Not files: refused with the reason, never waited on; as antenna file, a profile opens without.
mkdir folder && mkfifo "$work/pipe"
for input in "$work/pipe:it is not a regular file" "/dev/zero:it is not a regular file"; do
    path=${input%%:*} reason=${input#*:}
    check_refused 1 "cannot open $path: $reason" "$zavcli" analyse "$path"
    printf '[conditions]\r\nAntFilename=%s\r\nTester=T\r\n' "$path" > named.zav
    check_exit 0 "Error: cannot open antenna file $path: $reason." "$zavcli" profile named.zav
    grep -qx 'Tester	T' out.txt && grep -qx 'AntFilename	' out.txt || fail "named $path: $(cat out.txt)"
    check_refused 1 "no fix met the accuracy before the time-out" \
        "$zavcli" gps --file "$path" --timeout 0.5
done
refusals 1 "zavcli: cannot read $work/folder: it is a folder" "$zavcli" "nmea $work/folder; gps --file $work/folder"

export TZ=UTC
sox -q -D -n -r 48000 -b 16 -c 1 tone.wav synth 2 sine 1000 vol 0.5
"$zavcli" analyse tone.wav > analysed
value() { awk -F '\t' -v k="$1" '$1 == k { print $2 }' analysed; }
sox tone.wav -n stats 2> stats
# zavcli's Pk is scaled to read a sine's RMS: times √2 it is the crest sox reports.
awk -v r="$(value Rms)" -v p="$(value Pk)" '/^RMS lev dB/ { rms = 10 ^ ($4 / 20) }
    /^Pk lev dB/ { pk = 10 ^ ($4 / 20) } END { r /= rms; q = p * sqrt(2) / pk
    exit !(r > 0.998 && r < 1.002 && q > 0.995 && q < 1.005) }' stats &&
    [ "$(value SampleRate) $(value Samples)" = "48000 96000" ] || fail "analyse: $(cat analysed stats)"

rec=$work/noise-8000-16bit-1s.wav
sox -q -R -D -n -r 8000 -b 16 -c 1 "$rec" synth 1 whitenoise vol 0.9
touch -d "2024-05-01 12:34:56" "$rec"
sox "$rec" -t dat - | tr -d '\r' | grep -v '^;' > sox.dat
# agree FILE TOLERANCE: lines 2..8001 of FILE are sox's times and values; then gnuplot runs it.
agree() {
    sed -n 2,8001p "$1" | tr -d '\r' | paste - sox.dat | awk -v e="$2" '
        NF != 4 || $1 - $3 > e || $3 - $1 > e || $2 - $4 > e || $4 - $2 > e { print NR ": " $0; exit 1 }' ||
        fail "$1 differs from sox"
}
"$zavcli" export table "$rec" table.tab
[ "$(head -n 1 table.tab)" = "$(printf 'Time\tNormalisedVoltage\r')" ] && [ "$(wc -l < table.tab)" = 8001 ] &&
    [ "$(grep -c "$(printf '\r')\$" table.tab)" = 8001 ] || fail "table header or rows"
agree table.tab 5.1e-7
"$zavcli" export gnuplot --title "Receiver Internal Noise" "$rec" file.plt
"$zavcli" export gnuplot "$rec" --title "Receiver Internal Noise" | cmp - file.plt || fail "stdout"
grep -q "^set title \"ZAV: Receiver Internal Noise 20240501123456\"$(printf '\r')\$" file.plt || fail "title line"
agree file.plt 1e-9
gnuplot -e "set terminal dumb" file.plt > plot.txt 2> plot.err || fail "gnuplot: $(cat plot.err)"
[ ! -s plot.err ] && grep -q "ZAV: Receiver Internal Noise 20240501123456" plot.txt || fail "gnuplot: $(cat plot.err)"
"$zavcli" export gnuplot "$rec" | grep -q '"ZAV: External Noise 20240501123456"' || fail "default title"
check_exit 1 "cannot write" "$zavcli" export table "$rec" no/such/dir.tab


# As a receiver sends: pipes that stay open, pseudo-terminals busy, vanishing or fed in pieces.
mkfifo nmea.pipe fixpipe
"$zavcli" nmea - < nmea.pipe > events & started $!
exec 3> nmea.pipe && printf 'not a sentence\r\n' >&3
wait_for 100 grep -q "not a sentence" events || fail "nothing printed while the input is open"
exec 3>&-
# gps --file on a pipe that stays open averages the fixes sent until the time-out.
"$zavcli" gps --file fixpipe --timeout 2 > live 2> /dev/null & cli=$!; started $cli
exec 4> fixpipe && cat "$fixes" >&4
wait $cli || true
exec 4>&- && cmp live "${fixes%.nmea}.expected" || fail "gps on a pipe: $(cat live)"

capture() {
    start_pty
    "$zavcli" gps --device "$work/out" "$@" > result 2> errors & cli=$!; started $cli
    wait_for 100 holds_open $cli out || fail "the capture never opened the port"
}
unplug() { sleep "$1" && exec 3>&- && stop_peer $pty && { wait $cli || fail "capture: exit $?"; }; }
capture --timeout 20
check_exit 1 "Error: Port In Use" "$zavcli" gps --device "$work/out" --timeout 1
sed -n 4,6p "$fixes" >&3
wait $cli || fail "capture ended with $?: $(cat errors)"
cmp result "${fixes%.nmea}.expected" || fail "averages: $(cat result)"
exec 3>&- && stop_peer $pty

capture --timeout 20
sed -n 4p "$fixes" >&3
unplug 0.5
grep -q "^Error: Operation valid only when the port is open$" errors && [ "$(cut -f3 result)" = 1 ] ||
    fail "vanished port: $(cat result errors)"

# Every real capture, NUL bytes and glued sentences included: events, no crash or hang.
need_dir "$shared/nmea"
capture=$shared/nmea/quectel-l76k-gnss.nmea
for f in "$shared"/nmea/*.nmea; do [ "$("$zavcli" nmea "$f" | wc -l)" -gt 100 ] || fail "$f"; done
expected=$("$zavcli" gps --file "$capture" --acc 3)
[ "$(printf '%s' "$expected" | cut -f3)" = 26 ] || fail "--file: $expected"
for piece in 64 8; do # the capture never reaches 3 m: it runs until the port vanishes
    capture --speed 115200 --acc 3 --timeout 50
    dd if="$capture" bs="$piece" status=none >&3
    unplug 1
    [ "$(cat result)" = "$expected" ] || fail "$piece-byte pieces: $(cat result), --file: $expected"
done
echo "ok"
