#!/usr/bin/env bash
# Shows how many small faults the test suite catches. Run it by hand; it is not part of CI.
#   scripts/mutate.sh [WORK_DIR]   (a new folder under /tmp by default)
# Copies the tracked files, as they are in the working tree, to WORK_DIR/src, builds them once and
# runs the suite, which must pass. Then, for each line of scripts/mutations.txt, it makes that one
# change, rebuilds, runs the suite and puts the file back. A mutation is caught when the suite fails
# or times out. The repository itself is never written to. Giving the same WORK_DIR again reuses the
# build there, so only what changed since is compiled.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
work=$(realpath -m "${1:-$(mktemp -d /tmp/lumaspecter-mutate.XXXXXX)}")
case "$work/" in "$top"/*)
    echo "mutate: $work is inside the repository; give a folder outside it" >&2
    exit 1
    ;;
esac
src=$work/src
build=$work/build
mkdir -p "$src"
# The tests find the sample pictures at <source>/../shared, so the copy gets the same neighbour.
ln -sfn "$(cd "$top/../shared" && pwd)" "$work/shared"

# Rewrites only the files whose content differs, so that a reused build recompiles just those.
copy_tracked_files() {
    local file
    git -C "$top" ls-files -z | while IFS= read -r -d '' file; do
        [ -f "$top/$file" ] || continue
        cmp -s "$top/$file" "$src/$file" && continue
        mkdir -p "$(dirname "$src/$file")"
        cp "$top/$file" "$src/$file"
    done
}

build() {
    cmake --build "$build" -j 2 > "$work/build.log" 2>&1
}

suite_passes() {
    ctest --test-dir "$build" -j 2 --timeout 120 --stop-on-failure > "$work/test.log" 2>&1
}

first_failure() {
    grep -A1 "The following tests FAILED" "$work/test.log" | tail -n 1 | sed 's/^[[:space:]]*//'
}

# Replaces the one occurrence of ORIGINAL in FILE by MUTATED; fails when it is not there exactly once.
replace_once() {
    python3 - "$@" << 'EOF'
import sys
path, original, mutated = sys.argv[1:]
with open(path, encoding="utf-8", newline="") as f:
    text = f.read()
if "\n" in original or text.count(original) != 1:
    sys.exit(1)
with open(path, "w", encoding="utf-8", newline="") as f:
    f.write(text.replace(original, mutated))
EOF
}

copy_tracked_files
cmake -S "$src" -B "$build" -DCMAKE_BUILD_TYPE=Release -DLUMASPECTER_BENCHMARKS=OFF \
    > "$work/configure.log" 2>&1 || { cat "$work/configure.log"; exit 1; }
build || { tail -n 40 "$work/build.log"; echo "mutate: the unchanged copy does not build" >&2; exit 1; }
suite_passes || {
    echo "mutate: the suite fails without any mutation ($(first_failure)); see $work/test.log" >&2
    exit 1
}
echo "mutate: the unchanged suite passes; working in $work"

caught=0
counted=0
while IFS=$'\t' read -r file original mutated <&3; do
    case "$file" in '' | '#'*) continue ;; esac
    label="$file: '$original' -> '$mutated'"
    if ! cp "$src/$file" "$work/original" 2> /dev/null ||
        ! replace_once "$src/$file" "$original" "$mutated"; then
        echo "not found      $label"
        continue
    fi
    if ! build; then
        echo "did not build  $label"
    elif suite_passes; then
        echo "SURVIVED       $label"
        counted=$((counted + 1))
    else
        echo "caught         $label   [$(first_failure)]"
        caught=$((caught + 1))
        counted=$((counted + 1))
    fi
    # Copied without -p, so the file is newer than its object and the next build recompiles it.
    cp "$work/original" "$src/$file"
done 3< "$top/scripts/mutations.txt"

echo "caught $caught of $counted"
echo "mutate: took $((SECONDS / 60)) min $((SECONDS % 60)) s"
