#!/bin/sh
# zavcli gps --device reads a multi-system receiver's capture through a pair of socat
# pseudo-terminals, written in 8- and 64-byte pieces (a pseudo-terminal keeps no write sizes,
# so reads split lines anywhere): the same bytes must give what --file gives. The capture
# never reaches 3 m, so it runs until the port vanishes (socat ended by its pid).
set -u
zavcli=$1
capture=$2/nmea/quectel-l76k-gnss.nmea
[ -f "$capture" ] || { echo "no capture $capture"; exit 77; }
dir=$(mktemp -d)
socat_pid=
fail() { echo "FAIL: $*"; [ -f "$dir/errors" ] && cat "$dir/errors"; exit 1; }
stop_socat() {
    if [ -n "$socat_pid" ]; then kill "$socat_pid" 2>/dev/null; wait "$socat_pid" 2>/dev/null; fi
    socat_pid=
}
trap 'exec 3>&- 2>/dev/null; stop_socat; rm -rf "$dir"' EXIT

expected=$("$zavcli" gps --file "$capture" --acc 3) || fail "--file: exit $?"
[ "$(printf '%s' "$expected" | cut -f3)" = 26 ] || fail "--file: $expected"

for piece in 64 8; do
    rm -f "$dir/in" "$dir/out"
    socat pty,raw,echo=0,link="$dir/in" pty,raw,echo=0,link="$dir/out" 2>/dev/null &
    socat_pid=$!
    i=0
    while [ ! -e "$dir/in" ] || [ ! -e "$dir/out" ]; do
        i=$((i + 1)); [ $i -gt 100 ] && fail "socat made no pseudo-terminals"
        sleep 0.05
    done
    exec 3<>"$dir/in"
    "$zavcli" gps --device "$dir/out" --speed 115200 --acc 3 --timeout 50 \
        >"$dir/result" 2>"$dir/errors" &
    cli=$!
    target=$(readlink "$dir/out")
    i=0
    until ls -l "/proc/$cli/fd" 2>/dev/null | grep -q " $target\$"; do
        i=$((i + 1)); [ $i -gt 100 ] && fail "the capture never opened the port"
        sleep 0.05
    done
    dd if="$capture" bs="$piece" status=none >&3 || fail "writing in $piece-byte pieces"
    sleep 1
    exec 3>&-
    stop_socat
    wait "$cli" || fail "$piece-byte pieces: exit $?"
    [ "$(cat "$dir/result")" = "$expected" ] ||
        fail "$piece-byte pieces: $(cat "$dir/result"), --file: $expected"
done
echo "ok"
