#!/bin/sh
# needs-shared-data.sh DIR COMMAND...: runs COMMAND when the real captures in DIR are there.
# A clone outside this workspace may lack them: then the test is skipped (exit 77) with a
# message naming the folder, except in CI (CI set), where their absence is a failure.
dir=$1
shift
if [ ! -d "$dir" ]; then
    echo "needs the real captures in $dir (the shared data folder)"
    [ -n "${CI:-}" ] && exit 1
    exit 77
fi
exec "$@"
