#!/bin/sh
# zavcli gps --device on a pair of socat pseudo-terminals standing in for a GPS receiver:
# sentences written in pieces and averaged until the capture closes by itself, a second
# capture on the busy port, and a port that vanishes mid-capture. socat is ended by its pid.
set -u
zavcli=$1
data=$(dirname "$0")/../data/gps
dir=$(mktemp -d)
socat_pid=
fail() { echo "FAIL: $*"; [ -f "$dir/errors" ] && cat "$dir/errors"; exit 1; }
stop_socat() {
    if [ -n "$socat_pid" ]; then kill "$socat_pid" 2>/dev/null; wait "$socat_pid" 2>/dev/null; fi
    socat_pid=
}
trap 'exec 3>&- 2>/dev/null; stop_socat; rm -rf "$dir"' EXIT

start_socat() {
    rm -f "$dir/in" "$dir/out"
    socat pty,raw,echo=0,link="$dir/in" pty,raw,echo=0,link="$dir/out" 2>/dev/null &
    socat_pid=$!
    i=0
    while [ ! -e "$dir/in" ] || [ ! -e "$dir/out" ]; do
        i=$((i + 1)); [ $i -gt 100 ] && fail "socat made no pseudo-terminals"
        sleep 0.05
    done
    exec 3<>"$dir/in"
}

# Waits until capture $1 holds the port, then checks that a second capture finds it busy.
wait_until_open() {
    target=$(readlink "$dir/out")
    i=0
    until ls -l "/proc/$1/fd" 2>/dev/null | grep -q " $target\$"; do
        i=$((i + 1)); [ $i -gt 100 ] && fail "the capture never opened the port"
        sleep 0.05
    done
    rc=0
    "$zavcli" gps --device "$dir/out" --timeout 1 >/dev/null 2>"$dir/busy" || rc=$?
    [ "$rc" = 1 ] && grep -q "^Error: Port In Use\$" "$dir/busy" || fail "busy port: $(cat "$dir/busy")"
}

# Writes line $1 of the example fixes in two pieces, the first $2 characters apart.
send_in_pieces() {
    line=$(sed -n "$1p" "$data/example-fixes.nmea" | tr -d '\r')
    printf '%s' "$(printf '%s' "$line" | cut -c1-"$2")" >&3
    sleep 0.2
    printf '%s\r\n' "$(printf '%s' "$line" | cut -c$(($2 + 1))-)" >&3
    sleep 0.2
}

start_socat
"$zavcli" gps --device "$dir/out" --timeout 20 >"$dir/result" 2>"$dir/errors" &
cli=$!
wait_until_open "$cli"
send_in_pieces 4 9
send_in_pieces 5 30
send_in_pieces 6 1
wait "$cli"; rc=$?
[ "$rc" = 0 ] || fail "capture ended with $rc"
cmp "$dir/result" "$data/example-fixes.expected" || fail "averages: $(cat "$dir/result")"
exec 3>&-
stop_socat

start_socat
"$zavcli" gps --device "$dir/out" --timeout 20 >"$dir/result" 2>"$dir/errors" &
cli=$!
wait_until_open "$cli"
send_in_pieces 4 20
stop_socat
wait "$cli"; rc=$?
[ "$rc" = 0 ] || fail "vanished port: ended with $rc"
grep -q "^Error: Operation valid only when the port is open$" "$dir/errors" ||
    fail "vanished port: no error shown"
[ "$(cut -f3 "$dir/result")" = 1 ] || fail "vanished port: $(cat "$dir/result")"
echo "ok"
