#!/bin/sh
# run.sh BUILD SECONDS [TARGET...] -- runs the fuzz programs of a build folder, each for so many seconds, and fails at the
# first crash, hang or leak. New texts gather in BUILD/fuzz/corpus/<target>; what a fault needs is BUILD/fuzz/<target>-crash-...
set -eu
build=$(readlink -f -- "$1")
seconds=$2
shift 2
here=$(CDPATH='' cd -- "$(dirname -- "$(readlink -f -- "$0")")" && pwd)
# Short traces at allocations and plain scheduling of the corpus: both make it several times faster.
export ASAN_OPTIONS="${ASAN_OPTIONS:-malloc_context_size=3}"
# A check of a change must not depend on luck.
seed=
if [ "${CI:-}" = true ]; then seed=-seed=1; fi
[ $# -gt 0 ] || set -- deck library blocks digital explicit mixed data expression solution check composites measure words
for name in "$@"; do
    corpus=$build/fuzz/corpus/$name
    mkdir -p "$corpus"
    echo "fuzz $name, $seconds s"
    log=$build/fuzz/$name.log
    case $name in # bytes of a text; short ones run faster
        expression | measure) longest=200 ;;
        data) longest=1000 ;;
        library | blocks | explicit) longest=12000 ;;
        *) longest=4000 ;;
    esac
    # shellcheck disable=SC2086  # one option or none
    if ! "$build/bin/fuzz_$name" "$corpus" "$here/corpus/$name" -dict="$build/fuzz/$name.dict" \
        -max_total_time="$seconds" -rss_limit_mb=2048 -timeout=30 $seed -entropic=0 -max_len=$longest -print_final_stats=1 \
        -artifact_prefix="$build/fuzz/$name-" >"$log" 2>&1; then
        tail -n 60 "$log"
        echo "fuzz $name: FAILED; the whole text is in $log"
        exit 1
    fi
    grep -E '^stat::(number_of_executed_units|average_exec_per_sec|peak_rss_mb)' "$log"
done
