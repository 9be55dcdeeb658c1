#!/bin/sh
# zavcli's commands that need no peer: their output against expected files byte for byte (in
# a German locale too), and the exit codes and messages of bad usage and unusable input
# (folders, endless devices, pipes nobody writes to).
#   outputs.sh ZAVCLI SOURCE_DIR SHARED_DATA_DIR
zavcli=$1
data=$2/tests/data
shared=$3
. "$(dirname "$0")/harness.sh"

# same EXPECTED ARGS...: standard output is the file, whatever the locale.
same() {
    expected=$1
    shift
    for locale in C de_DE.UTF-8; do
        LC_ALL=$locale "$zavcli" "$@" > "$work/got" 2> /dev/null || true
        cmp -s "$work/got" "$expected" || { diff -u "$expected" "$work/got" >&2 || true; fail "$* in $locale"; }
    done
}
( cd "$data/profile"
  same windows-profile.expected.txt profile windows-profile.zav
  same windows-profile.expected.json profile windows-profile.zav --json
  same with-antenna.expected.txt profile with-antenna.zav
  : > "$work/empty.zav"
  same defaults.expected.txt profile "$work/empty.zav" )
( cd "$data/measure" && same antenna-line.expected antenna antenna-line.tab --at 2.5 --at 1 --at 5 --at 6 --at 0.5 )
( cd "$data/cli"
  same monitor-log.expected.json monitor-summary monitor-log.tab --json
  same monitor-log.expected.txt monitor-summary monitor-log.tab --column NormQp )
same "$data/gps/example-sentences.expected" nmea "$data/gps/example-sentences.nmea"
"$zavcli" nmea - < "$data/gps/example-sentences.nmea" | cmp - "$data/gps/example-sentences.expected"
fixes=$data/gps/example-fixes.nmea
check_exit 0 "" "$zavcli" gps --file "$fixes"
cmp out.txt "$data/gps/example-fixes.expected" && [ "$(cat err.txt)" = "Error: Subscript out of range" ] ||
    fail "gps --file: $(cat out.txt err.txt)"

"$zavcli" help > help.txt
for name in analyse measure record profile antenna nmea gps update export monitor monitor-summary; do
    grep -q "zavcli $name" help.txt || fail "help lacks $name"
done
"$zavcli" antenna --help | grep -q "usage: zavcli antenna" || fail "antenna --help"
check_refused 2 "unknown command" "$zavcli" frobnicate
check_refused 2 "" "$zavcli" help nothing
check_refused 2 "no such profile: no-such-profile.zav" "$zavcli" profile no-such-profile.zav
for args in "" "a.zav b.zav" "--xml a.zav"; do
    # shellcheck disable=SC2086
    check_refused 2 "" "$zavcli" profile $args
done
for args in "" "--file" "--file $fixes --device 1" "--file $fixes --acc x" "--file $fixes --timeout 0" \
    "--file $fixes --bogus 1"; do
    # shellcheck disable=SC2086
    check_refused 2 "usage: zavcli gps" "$zavcli" gps $args
done
check_refused 2 "Error: Overflow" "$zavcli" gps --file "$fixes" --speed 5000000
check_exit 1 "" "$zavcli" gps --file "$fixes.none"
check_exit 1 "" "$zavcli" gps --device /nonexistent/ttyQ9 --timeout 1
check_exit 1 "Update site not responding properly. HTTP status=0 (connection refused by 127.0.0.1:1)" \
    sh -c '"$0" update --base-url http://127.0.0.1:1/ >&2' "$zavcli"
check_refused 2 "" "$zavcli" update --base-url
check_refused 2 "" "$zavcli" update extra

# Antenna files: unsorted, and every bad usage.
printf '1\t1\n3\t3\n2\t2\n4\t4\n' > unsorted.tab
check_refused 1 "ZAV Antenna File error:" "$zavcli" antenna unsorted.tab --at 2
grep -q "Antenna File not sorted, load aborted." err.txt || fail "unsorted: $(cat err.txt)"
printf '1\t10\n2\t20\n3\t30\n' > good.tab
for args in "good.tab" "--at 2" "good.tab --at" "good.tab --at two" "good.tab good.tab --at 2" \
    "good.tab --near 2"; do
    # shellcheck disable=SC2086
    check_refused 2 "" "$zavcli" antenna $args
done

# Recordings: unusable files, and every bad usage.
sox -q -n -r 8000 -b 16 -c 1 sine.wav synth 0.5 sine 1000
sox -q -n -r 8000 -b 16 -c 2 stereo.wav synth 0.1 sine 440
printf 'RIFF\044\0\0\0WAVEfmt \020\0\0\0\001\0\001\0\100\037\0\0\200\076\0\0\002\0\020\0data\0\0\0\0' > empty.wav
check_refused 1 "Unsupported WAVE file format." "$zavcli" analyse stereo.wav
check_refused 1 "no samples" "$zavcli" analyse empty.wav
check_refused 1 "cannot open" "$zavcli" analyse absent.wav
for args in "" "sine.wav --frequency" "sine.wav --frequency seven" "sine.wav --frobnicate" "sine.wav sine.wav"; do
    # shellcheck disable=SC2086
    check_refused 2 "" "$zavcli" analyse $args
done

# Inputs that are not files: refused with the reason, never read or waited on. A profile that
# names one as its antenna file still opens, with the name cleared.
mkdir folder
mkfifo "$work/pipe"
for input in "$work/folder:it is a folder" "/dev/zero:it is not a regular file" \
    "$work/pipe:it is not a regular file"; do
    path=${input%%:*} reason=${input#*:}
    check_refused 1 "cannot open $path: $reason" "$zavcli" analyse "$path"
    check_refused 1 "Error: cannot open antenna file $path: $reason." "$zavcli" antenna "$path" --at 2
    printf '[conditions]\r\nAntFilename=%s\r\nTester=T\r\n' "$path" > named.zav
    check_exit 0 "Error: cannot open antenna file $path: $reason." "$zavcli" profile named.zav
    grep -qx 'Tester	T' out.txt && grep -qx 'AntFilename	' out.txt || fail "named $path: $(cat out.txt)"
done
for command in "nmea" "gps --file"; do
    # shellcheck disable=SC2086
    check_refused 1 "zavcli: cannot read $work/folder: it is a folder" "$zavcli" $command "$work/folder"
done
# A pipe nobody writes to and a device without line ends: gps ends at its time-out, empty.
for input in "$work/pipe" /dev/zero; do
    check_refused 1 "zavcli gps: no fix met the accuracy before the time-out" \
        "$zavcli" gps --file "$input" --timeout 0.5
done

# Every real capture, NUL bytes and glued sentences included: events, no crash, no hang.
need_dir "$shared/nmea"
for f in "$shared"/nmea/*.nmea; do
    [ "$("$zavcli" nmea "$f" | wc -l)" -gt 100 ] || fail "nmea $f"
done
echo "ok"
