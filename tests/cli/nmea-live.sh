#!/bin/sh
# zavcli nmea - follows a receiver piped in: a line's events come out while the input is still
# open, not when it ends. zavcli is ended by its process id should it not finish.
set -eu
zavcli=$1
dir=$(mktemp -d)
pid=
cleanup() {
    exec 3>&- 2> /dev/null || true
    if [ -n "$pid" ]; then kill "$pid" 2> /dev/null || true; fi
    rm -rf "$dir"
}
trap cleanup EXIT
mkfifo "$dir/in"
"$zavcli" nmea - < "$dir/in" > "$dir/out" &
pid=$!
exec 3> "$dir/in"
printf 'not a sentence\r\n' >&3
tries=0
until grep -q "not a sentence" "$dir/out"; do
    tries=$((tries + 1))
    if [ $tries -gt 100 ]; then
        echo "FAIL: nothing printed while the input is open" >&2
        exit 1
    fi
    sleep 0.05
done
exec 3>&-
wait "$pid"
pid=
