#!/bin/sh
# zavcli reading a receiver as it sends: pipes that stay open, socat's pseudo-terminals (busy,
# vanishing, a real capture in small pieces read as --file).   gps-live.sh ZAVCLI SHARED_DIR
zavcli=$1 capture=$2/nmea/quectel-l76k-gnss.nmea
fixes=$(cd "$(dirname "$0")/../data/gps" && pwd)/example-fixes
. "$(dirname "$0")/harness.sh"

mkfifo pipe fixpipe
"$zavcli" nmea - < pipe > events & started $!
exec 3> pipe
printf 'not a sentence\r\n' >&3
wait_for 100 grep -q "not a sentence" events || fail "nothing printed while the input is open"
exec 3>&-
# gps --file on a pipe that stays open averages the fixes sent until the time-out.
"$zavcli" gps --file fixpipe --timeout 2 > live 2> /dev/null & cli=$!; started $cli
exec 4> fixpipe
cat "$fixes.nmea" >&4
wait $cli || true
exec 4>&-
cmp live "$fixes.expected" || fail "gps on a pipe: $(cat live)"

# capture ARGS...: zavcli gps --device on new pseudo-terminals, once it holds the port.
capture() {
    start_pty
    "$zavcli" gps --device "$work/out" "$@" > result 2> errors & cli=$!; started $cli
    wait_for 100 holds_open $cli out || fail "the capture never opened the port"
}
unplug() { sleep "$1" && exec 3>&- && stop_peer $pty && { wait $cli || fail "capture: exit $?"; }; }
capture --timeout 20
check_exit 1 "Error: Port In Use" "$zavcli" gps --device "$work/out" --timeout 1
sed -n 4,6p "$fixes.nmea" >&3
wait $cli || fail "capture ended with $?: $(cat errors)"
cmp result "$fixes.expected" || fail "averages: $(cat result)"
exec 3>&-
stop_peer $pty

capture --timeout 20
sed -n 4p "$fixes.nmea" >&3
unplug 0.5
grep -q "^Error: Operation valid only when the port is open$" errors && [ "$(cut -f3 result)" = 1 ] ||
    fail "vanished port: $(cat result errors)"

need_dir "$(dirname "$capture")"
expected=$("$zavcli" gps --file "$capture" --acc 3)
[ "$(printf '%s' "$expected" | cut -f3)" = 26 ] || fail "--file: $expected"
for piece in 64 8; do # the capture never reaches 3 m: it runs until the port vanishes
    capture --speed 115200 --acc 3 --timeout 50
    dd if="$capture" bs="$piece" status=none >&3
    unplug 1
    [ "$(cat result)" = "$expected" ] || fail "$piece-byte pieces: $(cat result), --file: $expected"
done
echo "ok"
