# Sourced by the audio scripts (and run by the audio adapters' test, tests/qt/PulseServer): a
# private PulseAudio server with a null sink "zavsink" and a mono source "zavmic" that records
# whatever is played into the sink. No sound card needed. pulse_start (in PULSE_DIR if set,
# else a new folder) exports XDG_RUNTIME_DIR and PULSE_SERVER for everything started
# afterwards; pulse_stop ends the server by "pactl exit", else by the process id it wrote,
# never by name.

pulse_start() {
    PULSE_DIR=${PULSE_DIR:-$(mktemp -d)}
    chmod 700 "$PULSE_DIR"
    export XDG_RUNTIME_DIR="$PULSE_DIR" PULSE_SERVER="unix:$PULSE_DIR/pulse/native"
    # It leaves by itself 20 s after its last client, should the script die before pulse_stop.
    if ! HOME="$PULSE_DIR" pulseaudio -D -n --exit-idle-time=20 --use-pid-file=yes \
        --load="module-native-protocol-unix auth-anonymous=1" \
        --load="module-null-sink sink_name=zavsink" 2> "$PULSE_DIR/daemon.log"; then
        echo "PulseAudio could not be started:" >&2
        cat "$PULSE_DIR/daemon.log" >&2
        return 1
    fi
    tries=0
    until pactl info > /dev/null 2>&1; do
        tries=$((tries + 1))
        if [ $tries -gt 100 ]; then
            echo "PulseAudio started but does not answer on $PULSE_SERVER" >&2
            return 1
        fi
        sleep 0.1
    done
    PULSE_PID=$(cat "$PULSE_DIR/pulse/pid")
    pactl load-module module-remap-source master=zavsink.monitor source_name=zavmic \
        channels=1 > /dev/null &&
        pactl set-default-source zavmic && pactl set-default-sink zavsink
}

# True while process $1 runs (a zombie that nobody reaps does not count).
pulse_alive() {
    state=$(ps -o stat= -p "$1" 2> /dev/null) || return 1
    case "$state" in Z*) return 1 ;; esac
    return 0
}

pulse_stop() {
    [ -n "${PULSE_DIR:-}" ] || return 0
    [ -n "${PULSE_PID:-}" ] || PULSE_PID=$(cat "$PULSE_DIR/pulse/pid" 2> /dev/null) || true
    if [ -n "${PULSE_PID:-}" ]; then
        pactl exit > /dev/null 2>&1 || true
        tries=0
        while pulse_alive "$PULSE_PID" && [ $tries -lt 50 ]; do
            tries=$((tries + 1))
            sleep 0.1
        done
        if pulse_alive "$PULSE_PID"; then kill "$PULSE_PID" 2> /dev/null || true; fi
    fi
    rm -rf "$PULSE_DIR"
    PULSE_DIR= PULSE_PID=
}

# Waits until the server plays something (a player just started has connected).
pulse_wait_playing() {
    tries=0
    until [ -n "$(pactl list short sink-inputs 2> /dev/null)" ]; do
        tries=$((tries + 1))
        [ $tries -le 100 ] || return 1
        sleep 0.05
    done
}
