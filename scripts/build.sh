#!/usr/bin/env bash
# Configures and builds the project. Usage: build.sh BUILD_DIR [cmake options...]
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
build_dir=$1
shift
mkdir -p "$build_dir"
cmake -S "$top" -B "$build_dir" -DCMAKE_BUILD_TYPE=Release "$@" > "$build_dir/configure.log" 2>&1 \
    || { cat "$build_dir/configure.log"; exit 1; }
cmake --build "$build_dir" -j "$(nproc)"
