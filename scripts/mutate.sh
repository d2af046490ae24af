#!/usr/bin/env bash
# Shows what the test suite catches: applies each single-line mutation listed in
# scripts/mutations.txt (FILE: ORIGINAL ==> REPLACEMENT) in turn, rebuilds, runs every test and
# reports whether a test failed. Run it by hand before and after changing the tests; the number
# caught must not go down. Not part of CI: it rebuilds once per mutation.
# Usage: mutate.sh [BUILD_DIR]   (default build-mutate, configured on first use)
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
build_dir=${1:-$top/build-mutate}
list=$top/scripts/mutations.txt
backup=$(mktemp -d)
mutated=""

restore() {
    if [[ -n $mutated ]]; then
        cp "$backup/original" "$top/$mutated"  # a fresh mtime, so the next build recompiles it
        mutated=""
    fi
}
trap 'restore; rm -rf "$backup"' EXIT

# Replaces the one occurrence of $2 in file $1 by $3; fails when it is not there exactly once.
replace_once() {
    python3 - "$@" <<'PY'
import sys
path, original, replacement = sys.argv[1:4]
text = open(path, encoding="utf-8").read()
if text.count(original) != 1:
    sys.exit(f"{path}: found {text.count(original)} times: {original}")
open(path, "w", encoding="utf-8").write(text.replace(original, replacement))
PY
}

if [[ ! -f $build_dir/CMakeCache.txt ]]; then
    "$top/scripts/build.sh" "$build_dir" -DLUMASPECTER_BENCHMARKS=OFF
fi

total=0 caught=0 unbuilt=0
while IFS= read -r line; do
    [[ -z $line || $line == \#* ]] && continue
    file=${line%%: *}
    rest=${line#*: }
    original=${rest%% ==> *}
    replacement=${rest#* ==> }
    total=$((total + 1))
    cp "$top/$file" "$backup/original"
    mutated=$file
    if ! replace_once "$top/$file" "$original" "$replacement"; then
        restore
        echo "[$total] not applied: $file"
        unbuilt=$((unbuilt + 1))
        continue
    fi
    if ! cmake --build "$build_dir" -j 2 > "$backup/build.log" 2>&1; then
        verdict="does not build"
        unbuilt=$((unbuilt + 1))
    elif ctest --test-dir "$build_dir" -j 2 --timeout 900 --stop-on-failure > "$backup/test.log" 2>&1; then
        verdict="SURVIVED"
    else
        verdict="caught by $(grep -m1 -E 'Test +#[0-9]+: .*(\*\*\*|Subprocess)' "$backup/test.log" |
            sed -E 's/.*Test +#[0-9]+: ([^ ]+).*/\1/')"
        caught=$((caught + 1))
    fi
    restore
    echo "[$total] $file: $original  ==>  $replacement: $verdict"
done < "$list"
cmake --build "$build_dir" -j 2 > /dev/null 2>&1 || true
echo "caught $caught of $total mutations ($unbuilt not applied or not built)"
