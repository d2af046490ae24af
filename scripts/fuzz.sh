#!/usr/bin/env bash
# Builds the fuzz targets with clang and runs each for a while.
#   fuzz.sh [SECONDS]   (60 by default)
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
seconds=${1:-60}
"$top/scripts/setup.sh"

build_dir="$top/build-fuzz"
CC=clang CXX=clang++ "$top/scripts/build.sh" "$build_dir" -DLUMASPECTER_FUZZ=ON

corpus="$build_dir/corpus/taskfile"
mkdir -p "$corpus"
cp "$top/ui/resources/conf/taskinfo.conf" "$corpus/factory.json"
export LSAN_OPTIONS="suppressions=$top/tests/fuzz/lsan.supp"
cd "$build_dir"
"$build_dir/tests/fuzz/fuzz_taskfile" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=4096 \
    "$corpus" > "$build_dir/fuzz_taskfile.log" 2>&1 \
    || { tail -n 40 "$build_dir/fuzz_taskfile.log"; exit 1; }
grep -E "^Done|DONE" "$build_dir/fuzz_taskfile.log" || tail -n 3 "$build_dir/fuzz_taskfile.log"
