#!/bin/sh
# zavcli monitor on the demo recordings: tuning the dummy rig behind rigctld, Ctrl-C, the rig
# gone, bad usage; posting to a server (socat) down for the first cycles; a full disk.
# shellcheck disable=SC2086 # lists of words, split on purpose
zavcli=$1 examples=$2
. "$(dirname "$0")/harness.sh"
start_rigctld
steps="--step1 $examples/soundcard.wav --step2 $examples/receiver.wav --step3 $examples/external.wav"
rig="--profile $examples/example.zav $steps --rig 2 --rig-port 127.0.0.1:$rig_port --settle 50 --every 1s"
"$zavcli" monitor $rig --frequencies 3.5,5.3,7.0 --count 2 --log run.tab > run.out 2> run.err ||
    fail "run: $(cat run.err)"
[ "$(wc -l < run.out) $(grep -c ' MHz  FsRms ' run.out) $(wc -l < run.tab)" = "6 6 7" ] ||
    fail "one line and row per observation: $(cat run.out)"
[ "$(cut -f9 run.tab | tr -d '\r' | tail -n +2 | tr '\n' ' ')" = "3.500 5.300 7.000 3.500 5.300 7.000 " ] ||
    fail "frequencies logged: $(cut -f9 run.tab)"
[ "$(rigctl -m 2 -r 127.0.0.1:$rig_port f m | head -2 | tr '\n' ' ')" = "7000000 USB " ] || fail "rig left elsewhere"
grep -q 'antenna gain .* is used on every frequency' run.err || fail "antenna notice: $(cat run.err)"

"$zavcli" monitor $rig --frequencies 3.5,7.0 --count 1000 --log int.tab > int.out 2> int.err & mon=$!
started $mon && sleep 3 && kill -INT $mon
wait $mon && grep -q 'Run ended' int.err || fail "interrupted run: $(cat int.err)"
[ "$(wc -l < int.tab)" -ge 3 ] && [ "$(wc -l < int.tab)" -lt 40 ] && [ "$(tail -c 1 int.tab)" = "" ] &&
    awk -F'\t' 'NR > 1 && NF != 32 || !/\r$/ { exit 1 }' int.tab || fail "interrupted: $(wc -l < int.tab) rows"

stop_peer "$rigd"
check_exit 1 "cannot open rig model 2 at 127.0.0.1:$rig_port" \
    "$zavcli" monitor $rig --frequencies 3.5,7.0 --count 1 --log gone.tab
refusals 2 "" "$zavcli monitor" "--every soon; --frequencies 7,abc; --count 2 --until 10:00;
    --frequencies 3.5,7.0; --rig x; --step2 $examples/receiver.wav; --bogus"
check_exit 1 "no rig model 999999" "$zavcli" monitor --rig 999999 --rig-port x
check_exit 2 "" "$zavcli" monitor-summary
check_exit 1 "no column NoSuchKey" "$zavcli" monitor-summary run.tab --column NoSuchKey
check_exit 1 "" "$zavcli" monitor-summary "$work"

# Posts while the server is down are queued on disk and all arrive once it is up, each once.
port=$((20000 + ($$ * 13) % 30000))
sed "s|^url=.*|url=127.0.0.1:$port/collect|" "$examples/example.zav" > posting.zav
: > received.txt
"$zavcli" monitor --profile posting.zav --every 1s --count 6 --log posted.tab $steps > run.out 2> run.err &
mon=$! && started $mon && sleep 2.5
socat TCP-LISTEN:$port,bind=127.0.0.1,reuseaddr,fork EXEC:"$here/collect-server.sh" 2> /dev/null & started $!
wait $mon || fail "run: exit $? $(cat run.err)"
grep -q 'Server unreachable (connection refused by 127.0.0.1:' run.err && grep -q queued run.out ||
    fail "outage not told or nothing queued: $(cat run.err run.out)"
[ "$(wc -l < posted.tab) $(wc -l < received.txt) $(sort -u received.txt | wc -l)" = "7 6 6" ] &&
    [ "$(grep -c 'Frequency=7%2E100&' received.txt)" = 6 ] || fail "arrived: $(cat received.txt run.err)"
[ ! -e posted.tab.queue ] && grep -q ', 6 posted, 0 queued' run.err || fail "queue left: $(cat run.err)"
# measure --post: the receipt after the report, the account sent without the star that marks it.
sed "s|^url=.*|url=127.0.0.1:$port/collect|; s|^username=.*|username=*alice|" "$examples/example.zav" \
    > alice.zav
"$zavcli" measure --profile alice.zav --post $examples/soundcard.wav $examples/receiver.wav \
    $examples/external.wav > measured.out || fail "measure --post: exit $?"
[ "$(tail -n 1 measured.out)" = "Receipt: 7" ] && tail -n 1 received.txt | grep -q '&username=alice&' ||
    fail "measure --post: $(tail -n 2 measured.out received.txt)"
# update: the site's answer in words, exit 1 only when the site fails; "/" added to the address.
v=$(sed -n '2s/^Version\t\([0-9.]*\).*/\1/p' measured.out) home=http://www.zav-noise.org/zav/
while IFS='|' read -r code status body said; do
    printf 'HTTP/1.0 %s\r\nContent-Type: text/xml\r\n\r\n%s' "$status" "$body" > reply.http
    check_exit "$code" "" "$zavcli" update --base-url "http://127.0.0.1:$port/zavsite"
    [ "$(cat out.txt)" = "$said" ] || fail "update on $body: $(cat out.txt err.txt)"
done << CASES
0|200 OK|<update><url>$home</url><version>$v</version></update>|Version $v is current
0|200 OK|<update><url>$home</url><version>99.0.0</version></update>|New version available: 99.0.0
1|404 Not Found|<html>no such file</html>|Update site not responding properly. HTTP status=404
CASES
[ "$(cut -d' ' -f2 gets.txt | sort -u)" = /zavsite/Update.xml ] || fail "update asked for $(cat gets.txt)"

# A log that may grow to 160 KiB only, a few rows short of it: the run stops, every row whole.
sed "s|^url=.*|url=127.0.0.1:1/collect|" "$examples/example.zav" > down.zav
awk 'NR == 1 { print; next } { while (size < 160000) { print; size += length + 1 } }' posted.tab > full.tab
check_exit 1 'Cannot append to the data log full.tab (is the disk full?): the run stops' \
    sh -c 'ulimit -f 320; exec "$0" "$@"' "$zavcli" monitor --profile down.zav --every 1s --count 30 \
    --log full.tab $steps
awk -F'\t' 'NR == 2 { n = NF } NR > 1 && NF != n || !/\r$/ { exit 1 }' full.tab || fail "a half row"
echo "monitor: all checks passed"
