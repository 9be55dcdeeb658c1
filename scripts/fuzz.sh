#!/bin/sh
# Runs every libFuzzer target for FUZZ_SECONDS seconds (default 60) on seeds from the test
# data and the real captures; fails on the first crash, hang or sanitizer report.
#   scripts/fuzz.sh [TARGET...]
set -eu
here=$(cd "$(dirname "$0")/.." && pwd)
seconds=${FUZZ_SECONDS:-60}
build=$here/build-fuzz
CXX=clang++ cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DZAV_FUZZ=ON -DZAV_TESTS=OFF >/dev/null
cmake --build "$build" --target fuzz_all -j "$(nproc)"

seeds() { # target -> seed files
    case $1 in
        fuzz_wave_header) ls "$here"/examples/*.wav "$here"/../shared/data/wav/*.wav ;;
        fuzz_nmea) ls "$here"/../shared/data/nmea/*.nmea "$here"/tests/data/gps/*.nmea ;;
        fuzz_ini_file) ls "$here"/examples/*.zav "$here"/tests/data/profile/*.zav ;;
        fuzz_antenna_file) ls "$here"/examples/*.tab "$here"/tests/data/measure/*.tab ;;
        fuzz_replies) ls "$here"/tests/data/network/*.xml ;;
        *) ;;
    esac 2>/dev/null || true
}

targets=${*:-$(cd "$build/bin" && ls fuzz_* )}
status=0
for t in $targets; do
    corpus=$build/corpus/$t
    mkdir -p "$corpus"
    for f in $(seeds "$t"); do cp "$f" "$corpus/" 2>/dev/null || true; done
    # Inputs that name a folder, a pipe, an endless device and a failing read (see FuzzFile.h).
    case $t in
        fuzz_wave_header|fuzz_antenna_file|fuzz_ini_file)
            for k in 0 1 2 3; do printf "\376\375\00$k" > "$corpus/special-$k"; done ;;
    esac
    echo "== $t: $seconds s"
    if ! (cd "$build" && "$build/bin/$t" -max_total_time="$seconds" -timeout=10 \
            -rss_limit_mb=2048 -max_len=65536 -print_final_stats=1 "$corpus" \
            2>"$build/$t.log"); then
        echo "!! $t failed; see $build/$t.log" >&2
        tail -30 "$build/$t.log" >&2
        status=1
    fi
    grep -E '^stat::(number_of_executed_units|average_exec_per_sec)' "$build/$t.log" || true
done
exit $status
