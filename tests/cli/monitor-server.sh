#!/bin/sh
# zavcli monitor posting to a server (socat) that is down for the first cycles: every
# observation arrives exactly once and the queue on disk is gone. Then a full disk.
zavcli=$1
examples=$2
. "$(dirname "$0")/harness.sh"

cat > serve.sh << 'HANDLER'
#!/bin/sh
# One request: the body (Content-Length bytes after the headers) is appended to received.txt.
len=0
while IFS= read -r line; do
    line=$(printf '%s' "$line" | tr -d '\r')
    [ -z "$line" ] && break
    case "$line" in [Cc]ontent-[Ll]ength:*) len=$(echo "${line#*:}" | tr -d ' ') ;; esac
done
{ head -c "$len" && echo; } >> received.txt
printf 'HTTP/1.0 200 OK\r\nContent-Type: text/xml\r\n\r\n<r><cc>0</cc><receipt>%s</receipt></r>' \
    "$(wc -l < received.txt)"
HANDLER
chmod +x serve.sh

port=$((20000 + ($$ * 13) % 30000))
sed "s|^url=.*|url=127.0.0.1:$port/collect|" "$examples/example.zav" > posting.zav
: > received.txt

files="--step1 $examples/soundcard.wav --step2 $examples/receiver.wav --step3 $examples/external.wav"
# shellcheck disable=SC2086
"$zavcli" monitor --profile posting.zav --every 1s --count 6 --log posted.tab $files > run.out 2> run.err & mon=$!; started $mon
sleep 2.5
socat TCP-LISTEN:$port,bind=127.0.0.1,reuseaddr,fork EXEC:./serve.sh 2> /dev/null & started $!
wait $mon || fail "run: exit $? $(cat run.err)"
grep -q 'Server unreachable (connection refused by 127.0.0.1:' run.err || fail "no outage told: $(cat run.err)"
[ "$(grep -c 'queued' run.out)" -ge 1 ] || fail "nothing queued while down: $(cat run.out)"
[ "$(wc -l < posted.tab) $(wc -l < received.txt) $(sort -u received.txt | wc -l)" = "7 6 6" ] &&
    [ "$(grep -c 'Frequency=7%2E100&' received.txt)" = 6 ] || fail "arrived: $(cat received.txt run.err)"
[ ! -e posted.tab.queue ] || fail "the queue was left behind"
grep -q ', 6 posted, 0 queued' run.err || fail "summary: $(tail -1 run.err)"

# A log that may grow to 160 KiB only, a few rows short of it: the run stops saying so, every
# row and the queue of posts (server down) whole, nothing else left behind.
sed "s|^url=.*|url=127.0.0.1:1/collect|" "$examples/example.zav" > down.zav
awk 'NR == 1 { print; next } { while (size < 160000) { print; size += length + 1 } }' \
    posted.tab > full.tab
rows=$(wc -l < full.tab)
# shellcheck disable=SC2086
check_exit 1 'Cannot append to the data log full.tab (is the disk full?): the run stops' \
    sh -c 'ulimit -f 320; exec "$0" "$@"' "$zavcli" monitor --profile down.zav --every 1s --count 30 \
    --log full.tab $files
added=$(($(wc -l < full.tab) - rows))
[ $added -ge 1 ] && [ $added -lt 30 ] || fail "rows added: $added"
awk -F'\t' 'NR == 2 { n = NF } NR > 1 && NF != n || !/\r$/ { exit 1 }' full.tab || fail "a half row"
[ "$(grep -c '&client=1&debug=0$' full.tab.queue)" = $added ] &&
    [ "$(wc -l < full.tab.queue)" = $added ] || fail "queue: $(cat full.tab.queue)"
[ "$(ls | grep -c full)" = 2 ] || fail "left behind: $(ls)"
echo "monitor server: all checks passed"
