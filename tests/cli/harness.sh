# Sourced by every script here (paths given to them absolute): a scratch folder, removed on exit
# with every registered peer ended by its process id, never by name, and PulseAudio stopped.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
. "$here/pulse-server.sh"
work=$(mktemp -d) peers=
trap 'exec 3>&- 2> /dev/null; for p in $peers; do stop_peer "$p"; done; [ -z "${pulse_on:-}" ] || pulse_stop
    cd / && rm -rf "$work"' EXIT
trap 'exit 1' INT TERM && cd "$work"

fail() { echo "FAIL: $*" >&2; exit 1; }
started() { peers="$1 $peers"; }
stop_peer() {
    { kill "$1"; wait "$1"; } 2> /dev/null || true
    peers=$(echo " $peers " | sed "s/ $1 / /")
}
# need_dir DIR: skipped (77) without the real captures in DIR, failed in CI.
need_dir() {
    [ -d "$1" ] || { echo "needs the real captures in $1" && exit "$([ -n "${CI:-}" ] && echo 1 || echo 77)"; }
}
wait_for() { pulse_poll "$@"; } # TRIES COMMAND...: false when COMMAND never succeeds
# check_exit CODE TEXT COMMAND...: exit CODE, TEXT (if any) on standard error; output left
# in out.txt and err.txt. check_refused: the same, and nothing on standard output.
check_exit() {
    want=$1 text=$2 rc=0
    shift 2
    "$@" > out.txt 2> err.txt || rc=$?
    [ "$rc" = "$want" ] || fail "$*: exit $rc, not $want: $(cat err.txt)"
    [ -z "$text" ] || grep -qF -- "$text" err.txt || fail "$*: said $(cat err.txt)"
}
check_refused() { check_exit "$@" && { [ ! -s out.txt ] || fail "$*: printed $(cat out.txt)"; }; }
# refusals CODE TEXT PREFIX "ARGS; ARGS...": check_refused CODE TEXT PREFIX ARGS for each.
refusals() {
    # shellcheck disable=SC2086
    echo "$4" | tr ';' '\n' | grep . | while read -r words; do check_refused "$1" "$2" $3 $words; done
}
# Hamlib's dummy rig behind rigctld on a free port ($rig_port), not another's rigctld.
start_rigctld() {
    for try in 1 2 3 4 5; do
        rig_port=$((20000 + ($$ * 7 + try * 131) % 30000))
        rigctld -m 1 -T 127.0.0.1 -t "$rig_port" & rigd=$!; started $rigd
        wait_for 30 rigctl -m 2 -r "127.0.0.1:$rig_port" f && kill -0 "$rigd" 2> /dev/null && return 0
        stop_peer "$rigd"
    done
    fail "rigctld did not start"
}
# A socat pair of pseudo-terminals: bytes written to descriptor 3 come out of $work/out.
start_pty() {
    rm -f in out
    socat pty,raw,echo=0,link="$work/in" pty,raw,echo=0,link="$work/out" 2> /dev/null & pty=$!; started $pty
    wait_for 50 test -e in -a -e out && exec 3<> in || fail "socat made no pseudo-terminals"
}
holds_open() { ls -l "/proc/$1/fd" 2> /dev/null | grep -q " $(readlink "$2")\$"; }
start_pulse() { pulse_on=1 && pulse_start || fail "PulseAudio could not be started"; }
