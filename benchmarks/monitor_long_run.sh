#!/bin/sh
# A long unattended run as a campaign would make it: zavcli monitor on three frequencies tuned
# through rigctld (Hamlib's dummy rig), recording live from a private PulseAudio source fed a
# level per frequency, posting to a collection server (socat) that is down for the first
# cycles; in cycle 5 the audio source is removed in the middle of a recording and put back a
# second later. Prints the log's row count, the gaps told and the server's request count.
#   benchmarks/monitor_long_run.sh [MINUTES] [path/to/zavcli]   (default 30, build/bin/zavcli)
set -eu
here=$(cd "$(dirname "$0")/.." && pwd)
minutes=${1:-30}
zavcli=$(realpath "${2:-$here/build/bin/zavcli}")
examples=$here/examples
. "$here/tests/cli/pulse-server.sh"
work=$(mktemp -d)
rigd= feeder= server= mon= keeper=
cleanup() {
    for p in $mon $feeder $server $rigd $keeper; do kill "$p" 2> /dev/null || true; wait "$p" 2> /dev/null || true; done
    pulse_stop
}
trap cleanup EXIT
trap 'exit 1' INT TERM
cd "$work"
echo "working in $work"
pulse_start
# A client that stays: the private server leaves 20 s after its last one otherwise.
sox -n -r 44100 -c 1 -b 16 silence.wav synth 1 sine 1000 vol 0
(while :; do paplay -d zavsink silence.wav; done) &
keeper=$!
port=$((20000 + ($$ * 11) % 30000))
rigctld -m 1 -T 127.0.0.1 -t $port &
rigd=$!
sleep 1
sox -n -r 44100 -c 1 -b 16 3500000.wav synth 150 whitenoise vol 0.0795
sox -n -r 44100 -c 1 -b 16 5300000.wav synth 150 whitenoise vol 0.159
sox -n -r 44100 -c 1 -b 16 7000000.wav synth 150 whitenoise vol 0.318
(
    playing= player=
    trap 'if [ -n "$player" ]; then kill $player 2> /dev/null; fi; exit 0' TERM
    while :; do
        f=$(rigctl -m 2 -r 127.0.0.1:$port f 2> /dev/null || true)
        if [ -n "$f" ] && [ "$f" != "$playing" ] && [ -e "$f.wav" ]; then
            if [ -n "$player" ]; then kill $player 2> /dev/null || true; fi
            paplay -d zavsink "$f.wav" &
            player=$!
            playing=$f
        fi
        sleep 0.1
    done
) &
feeder=$!
: > received.txt
hport=$((port + 1))
# Recordings of 5 s, so that the removal can fall inside one.
sed -e "s|^url=.*|url=127.0.0.1:$hport/collect|" -e 's/^Interval=.*/Interval=5000/' \
    "$examples/example.zav" > campaign.zav

"$zavcli" monitor --profile campaign.zav --frequencies 3.5,5.3,7.0 --every 1m --count "$minutes" \
    --rig 2 --rig-port 127.0.0.1:$port --settle 1500 --device zavmic --log campaign.tab \
    --step1 "$examples/soundcard.wav" --step2 "$examples/receiver.wav" > campaign.out 2> campaign.err &
mon=$!
# The server is down for the first three cycles.
sleep 170
socat TCP-LISTEN:$hport,bind=127.0.0.1,reuseaddr,fork EXEC:"$here/tests/cli/collect-server.sh" 2> /dev/null &
server=$!
# The audio source leaves one second into the first recording of cycle 5 (timed by the
# server's list of recording streams) and comes back a second later, before the next one.
sleep $((4 * 60 - 170 - 10))
# (The remapping module's own stream, client "-", is not a recording.)
stream=$(pactl list short source-outputs | awk '$3 != "-" { print $1; exit }')
until s=$(pactl list short source-outputs | awk -v l="$stream" '$1 != l && $3 != "-" { print $1; exit }') &&
    [ -n "$s" ]; do sleep 0.05; done
sleep 1
module=$(pactl list short modules | awk '/module-remap-source/ { print $1 }')
pactl unload-module "$module"
echo "source removed at $(date +%T), in recording stream $s"
sleep 1
pactl load-module module-remap-source master=zavsink.monitor source_name=zavmic channels=1 > /dev/null
echo "source back at $(date +%T)"
rc=0; wait $mon || rc=$?; mon=
sleep 2
echo "exit $rc"
tail -3 campaign.err
echo "data log rows (without header): $(($(wc -l < campaign.tab) - 1)) of $((3 * minutes))"
echo "server requests: $(wc -l < received.txt), distinct: $(sort -u received.txt | wc -l)"
echo "audio gaps told: $(grep -c 'Audio input gap' campaign.err || true)"
grep 'Audio input gap' campaign.err || true
