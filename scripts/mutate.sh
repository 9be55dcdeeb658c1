#!/bin/sh
# Plants one-line faults in the core, one at a time, and reports whether the tests notice.
#
#   scripts/mutate.sh [--build-dir DIR] [--only PATTERN] [--list] [--timeout SECONDS]
#                     [--jobs N] [--mutations FILE] [--full-build] [--logs DIR]
#                     [--keep-going-on-red]
#
# Each entry of the list (scripts/mutations.tsv: id, labels, file, text, replacement, separated
# by tabs) replaces text that must occur exactly once in the file; an entry whose text occurs
# zero or several times is reported as not applicable and skipped. For each fault the programs
# that the tests with the entry's labels run are rebuilt incrementally in the build directory (an
# existing CMake build, default build/; --full-build rebuilds everything) and those tests are
# run (ctest -L, TIMEOUT seconds per test, default 60): a failing test kills the fault, a
# passing run lets it survive, a fault that does not compile is not counted. The file is always
# put back, also on an interrupt or a failed build. --only PATTERN (an awk regular expression)
# picks entries by id or file; --list shows them. --logs keeps each fault's build and test
# output in DIR.
#
# Needs a POSIX shell, awk, perl, cmake, ctest and git. Not part of `make test`: `make mutate`.

set -u

ROOT=$(cd "$(dirname "$0")/.." && pwd)
BUILD_DIR=build
ONLY=
LIST_ONLY=0
TIMEOUT=60
JOBS=2
MUTATIONS="$ROOT/scripts/mutations.tsv"
CHECK_BASELINE=1
FULL_BUILD=0
LOGS=

usage() {
    sed -n '2,20p' "$0" | sed 's/^# \{0,1\}//'
    exit 2
}

while [ $# -gt 0 ]; do
    case "$1" in
    --build-dir) [ $# -ge 2 ] || usage; BUILD_DIR=$2; shift 2 ;;
    --only) [ $# -ge 2 ] || usage; ONLY=$2; shift 2 ;;
    --list) LIST_ONLY=1; shift ;;
    --timeout) [ $# -ge 2 ] || usage; TIMEOUT=$2; shift 2 ;;
    --jobs) [ $# -ge 2 ] || usage; JOBS=$2; shift 2 ;;
    --mutations) [ $# -ge 2 ] || usage; MUTATIONS=$2; shift 2 ;;
    --keep-going-on-red) CHECK_BASELINE=0; shift ;;
    --full-build) FULL_BUILD=1; shift ;;
    --logs) [ $# -ge 2 ] || usage; LOGS=$2; shift 2 ;;
    -h | --help) usage ;;
    *) echo "mutate.sh: unknown option $1" >&2; usage ;;
    esac
done

case "$BUILD_DIR" in /*) ;; *) BUILD_DIR="$ROOT/$BUILD_DIR" ;; esac
[ -r "$MUTATIONS" ] || { echo "mutate.sh: cannot read $MUTATIONS" >&2; exit 2; }

# The entries, in order: comments and blank lines skipped, --only matched against the id and
# the file (an awk extended regular expression).
entries() {
    awk -F '\t' -v only="$ONLY" '
        /^#/ || NF == 0 { next }
        NF != 5 { printf "mutate.sh: line %d has %d fields, not 5\n", NR, NF > "/dev/stderr"; next }
        only == "" || $1 ~ only || $3 ~ only { print $1 }' "$MUTATIONS"
}

field() { # field ID N
    awk -F '\t' -v id="$1" -v n="$2" '!/^#/ && $1 == id { print $n; exit }' "$MUTATIONS"
}

if [ "$LIST_ONLY" = 1 ]; then
    awk -F '\t' -v only="$ONLY" '
        /^#/ || NF != 5 { next }
        only == "" || $1 ~ only || $3 ~ only {
            printf "%-24s %-16s %s\n    - %s\n    + %s\n", $1, $2, $3, $4, $5 }' "$MUTATIONS"
    exit 0
fi

[ -f "$BUILD_DIR/CMakeCache.txt" ] || {
    echo "mutate.sh: $BUILD_DIR is no CMake build directory (configure it first, e.g. make build)" >&2
    exit 2
}

WORK=$(mktemp -d "${TMPDIR:-/tmp}/zav-mutate.XXXXXX") || exit 2
if [ -n "$LOGS" ]; then
    mkdir -p "$LOGS" || exit 2
    LOGS=$(cd "$LOGS" && pwd)
else
    LOGS=$WORK
fi
CURRENT_FILE=
BACKUP="$WORK/original"

restore() {
    if [ -n "$CURRENT_FILE" ]; then
        # Copied over, not moved: a new modification time makes the next build recompile it.
        cat "$BACKUP" > "$CURRENT_FILE"
        CURRENT_FILE=
    fi
}
cleanup() {
    restore
    rm -rf "$WORK"
}
trap cleanup EXIT
trap 'echo; echo "mutate.sh: interrupted, source restored" >&2; exit 130' INT TERM HUP

occurrences() { # occurrences FILE TEXT
    FIND=$2 perl -0777 -ne '$n = () = /\Q$ENV{FIND}\E/g; print $n' "$1"
}

label_regex() { # "measure,cli" -> ^(measure|cli)$
    printf '^(%s)$' "$(printf '%s' "$1" | tr ',' '|')"
}

run_tests() { # run_tests LABELS LOG: 0 passed, 1 failed, 2 no test carries the labels
    (cd "$BUILD_DIR" && ctest -L "$(label_regex "$1")" --timeout "$TIMEOUT" -j "$JOBS" \
        --stop-on-failure) > "$2" 2>&1
    rc=$?
    if grep -q "No tests were found" "$2"; then
        return 2
    fi
    [ $rc = 0 ] && return 0
    return 1
}

build() { # build LOG: everything
    cmake --build "$BUILD_DIR" -j "$JOBS" > "$1" 2>&1
}

# The programs the labelled tests run (each test program, and a program a script is handed,
# with its helpers named PROGRAM-*): rebuilding only these skips relinking everything else.
# Empty when a test names no program of the build, so that everything is built.
needed_targets() { # needed_targets LABELS
    bin=$(sed -n "s/^CMAKE_RUNTIME_OUTPUT_DIRECTORY:[A-Z]*=//p" "$BUILD_DIR/CMakeCache.txt")
    [ -n "$bin" ] || bin="$BUILD_DIR/bin"
    names=$(cd "$BUILD_DIR" && ctest -N -L "$(label_regex "$1")" --show-only=json-v1 2>/dev/null |
        grep -o "$bin/[A-Za-z0-9_.+-]*" | sed "s|^$bin/||" | sort -u)
    [ -n "$names" ] || return 0
    known=$(cmake --build "$BUILD_DIR" --target help 2>/dev/null | sed -n "s/^\([^: ]*\): .*/\1/p")
    for name in $names; do
        printf "%s\n" "$known" | grep -Fqx -- "$name" || return 0
    done
    for name in $names; do
        printf "%s\n%s\n" "$name" "$(printf "%s\n" "$known" | grep -x -- "$name-.*")"
    done | grep . | sort -u | tr "\n" " "
}

build_for() { # build_for LABELS LOG
    if [ "$FULL_BUILD" = 1 ]; then
        build "$2"
        return
    fi
    targets=$(needed_targets "$1")
    if [ -z "$targets" ]; then
        build "$2"
        return
    fi
    # shellcheck disable=SC2086
    cmake --build "$BUILD_DIR" -j "$JOBS" --target $targets > "$2" 2>&1
}

IDS=$(entries)
[ -n "$IDS" ] || { echo "mutate.sh: no entry matches" >&2; exit 2; }

# Source files that differ from the last commit before the run must be the same after it.
DIRTY_BEFORE=$(cd "$ROOT" && git status --porcelain -- src 2>/dev/null)

echo "Building the unchanged tree in $BUILD_DIR ..."
if ! build "$WORK/build.log"; then
    tail -n 30 "$WORK/build.log"
    echo "mutate.sh: the unchanged tree does not build" >&2
    exit 1
fi

if [ "$CHECK_BASELINE" = 1 ]; then
    # A test that already fails would kill every fault: the labels in use must pass first.
    ALL_LABELS=$(for id in $IDS; do field "$id" 2; done | tr ',' '\n' | sort -u | paste -sd, -)
    echo "Running the tests labelled $ALL_LABELS on the unchanged tree ..."
    run_tests "$ALL_LABELS" "$WORK/baseline.log"
    case $? in
    0) ;;
    2) echo "mutate.sh: no test carries the labels $ALL_LABELS" >&2; exit 1 ;;
    *) grep -E "Failed|\*\*\*|Timeout" "$WORK/baseline.log" | head -n 20
       echo "mutate.sh: the tests fail without any fault (--keep-going-on-red to go on)" >&2
       exit 1 ;;
    esac
fi

KILLED=0
APPLICABLE=0
SURVIVORS=
NOT_APPLICABLE=
BUILD_FAILED=
NO_TESTS=
START=$(date +%s)

for id in $IDS; do
    labels=$(field "$id" 2)
    file=$(field "$id" 3)
    find=$(field "$id" 4)
    replace=$(field "$id" 5)
    path="$ROOT/$file"
    if [ ! -f "$path" ]; then
        printf '%-24s not applicable (no file %s)\n' "$id" "$file"
        NOT_APPLICABLE="$NOT_APPLICABLE $id"
        continue
    fi
    n=$(occurrences "$path" "$find")
    if [ "$n" != 1 ]; then
        printf '%-24s not applicable (text found %s times in %s)\n' "$id" "$n" "$file"
        NOT_APPLICABLE="$NOT_APPLICABLE $id"
        continue
    fi

    cp "$path" "$BACKUP"
    CURRENT_FILE=$path
    FIND=$find REPLACE=$replace perl -0777 -pi -e 's/\Q$ENV{FIND}\E/$ENV{REPLACE}/' "$path"
    if cmp -s "$path" "$BACKUP"; then
        restore
        printf '%-24s not applicable (replacement changes nothing)\n' "$id"
        NOT_APPLICABLE="$NOT_APPLICABLE $id"
        continue
    fi

    t0=$(date +%s)
    if ! build_for "$labels" "$LOGS/$id.build.log"; then
        result="build failed"
        BUILD_FAILED="$BUILD_FAILED $id"
    else
        run_tests "$labels" "$LOGS/$id.test.log"
        case $? in
        0) result="SURVIVED"; APPLICABLE=$((APPLICABLE + 1)); SURVIVORS="$SURVIVORS $id" ;;
        2) result="no test labelled $labels"; NO_TESTS="$NO_TESTS $id" ;;
        *) APPLICABLE=$((APPLICABLE + 1)); KILLED=$((KILLED + 1))
           first=$(grep -m 1 -E '\*\*\*(Failed|Timeout|Exception)|\(Failed\)|\(Timeout\)' \
                       "$LOGS/$id.test.log" | sed 's/^ *[0-9]*\/[0-9]* Test *#[0-9]*: //; s/ *\.\.\.*.*//')
           result="killed${first:+ by $first}" ;;
        esac
    fi
    restore
    printf '%-24s %-10s %s (%ss)\n' "$id" "[$labels]" "$result" "$(($(date +%s) - t0))"
done

# The build directory is left as the unchanged tree built it.
build "$WORK/build.log" || echo "mutate.sh: warning: the final rebuild of the unchanged tree failed" >&2

echo
echo "Mutation score: $KILLED killed of $APPLICABLE applicable ($(($(date +%s) - START))s)"
[ -n "$SURVIVORS" ] && echo "Survivors:$SURVIVORS"
[ -n "$BUILD_FAILED" ] && echo "Build failed (not counted):$BUILD_FAILED"
[ -n "$NOT_APPLICABLE" ] && echo "Not applicable (text not found exactly once):$NOT_APPLICABLE"
[ -n "$NO_TESTS" ] && echo "No test with the entry's labels (not counted):$NO_TESTS"

STATUS=0
if [ "$(cd "$ROOT" && git status --porcelain -- src 2>/dev/null)" != "$DIRTY_BEFORE" ]; then
    echo "mutate.sh: the source tree differs from before the run:" >&2
    (cd "$ROOT" && git status --short -- src) >&2
    STATUS=1
else
    echo "Source tree as before the run (git status clean for src/ unless it was dirty before)."
fi
exit $STATUS
