#!/usr/bin/env bash
# Sets up and builds the project, then runs every test.
#   test.sh             the normal build, in build/
#   test.sh --sanitize  with AddressSanitizer and UndefinedBehaviorSanitizer, in build-sanitize/
#   test.sh --threads   with ThreadSanitizer, in build-tsan/: every test, since any may start a
#                       thread (the measurement run, the inspect tool's jobs)
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
"$top/scripts/setup.sh"

build_dir="$top/build"
options=()
if [ "${1:-}" = "--sanitize" ]; then
    build_dir="$top/build-sanitize"
    options=(-DLUMASPECTER_SANITIZE=ON -DLUMASPECTER_BENCHMARKS=OFF)
    export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
    export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
elif [ "${1:-}" = "--threads" ]; then
    build_dir="$top/build-tsan"
    options=(-DLUMASPECTER_TSAN=ON -DLUMASPECTER_BENCHMARKS=OFF)
    export TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1 suppressions=$top/tests/tsan.supp"
fi
"$top/scripts/build.sh" "$build_dir" "${options[@]}"
ctest --test-dir "$build_dir" --output-on-failure -j "$(nproc)"
