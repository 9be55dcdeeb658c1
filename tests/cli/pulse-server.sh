# Sourced by the audio scripts, tests and benchmarks: a private PulseAudio server with a null
# sink "zavsink" and a mono source "zavmic" recording what it plays. pulse_start (in PULSE_DIR,
# else a new folder) exports XDG_RUNTIME_DIR and PULSE_SERVER; pulse_stop ends it by "pactl
# exit", else by the process id it wrote, never by name.

# pulse_poll TRIES COMMAND...: until COMMAND succeeds, 0.1 s apart; false if it never does.
pulse_poll() {
    n=$1 && shift
    until "$@" > /dev/null 2>&1; do n=$((n - 1)) && [ $n -gt 0 ] && sleep 0.1 || return 1; done
}

pulse_start() {
    PULSE_DIR=${PULSE_DIR:-$(mktemp -d)} && chmod 700 "$PULSE_DIR"
    export XDG_RUNTIME_DIR="$PULSE_DIR" PULSE_SERVER="unix:$PULSE_DIR/pulse/native"
    # It leaves by itself 20 s after its last client, should the script die before pulse_stop.
    HOME="$PULSE_DIR" pulseaudio -D -n --exit-idle-time=20 --use-pid-file=yes \
        --load="module-native-protocol-unix auth-anonymous=1" \
        --load="module-null-sink sink_name=zavsink" 2> "$PULSE_DIR/daemon.log" ||
        { cat "$PULSE_DIR/daemon.log" >&2; return 1; }
    pulse_poll 100 pactl info || { echo "no PulseAudio on $PULSE_SERVER" >&2; return 1; }
    PULSE_PID=$(cat "$PULSE_DIR/pulse/pid")
    pactl load-module module-remap-source master=zavsink.monitor source_name=zavmic \
        channels=1 > /dev/null &&
        pactl set-default-source zavmic && pactl set-default-sink zavsink
}

pulse_stop() {
    [ -n "${PULSE_DIR:-}" ] || return 0
    PULSE_PID=${PULSE_PID:-$(cat "$PULSE_DIR/pulse/pid" 2> /dev/null || true)}
    if [ -n "$PULSE_PID" ]; then
        pactl exit > /dev/null 2>&1 || true
        pulse_poll 50 sh -c 'case $(ps -o stat= -p "$0") in "" | Z*) ;; *) exit 1 ;; esac' \
            "$PULSE_PID" || kill "$PULSE_PID" 2> /dev/null || true
    fi
    rm -rf "$PULSE_DIR" && PULSE_DIR= PULSE_PID=
}

pulse_wait_playing() { pulse_poll 100 sh -c '[ -n "$(pactl list short sink-inputs)" ]'; }
