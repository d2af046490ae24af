#!/usr/bin/env bash
# Counts the instructions of one single-fiber inspection with valgrind's callgrind: the inspect
# tool on a rendered raw frame with the default task, run on one frame and on five; the
# difference, divided by four, is what an inspection costs without the tool's start-up.
# Prints the whole and the stages, in millions of instructions.
# Usage: instructions.sh [BUILD_DIR]   (default: build, as scripts/build.sh makes it)
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
build=$(cd "${1:-$top/build}" && pwd)
render="$build/tools/lumaspecter-render/lumaspecter-render"
inspect="$build/tools/lumaspecter-inspect/lumaspecter-inspect"
for tool in "$render" "$inspect"; do
    [ -x "$tool" ] || { echo "instructions.sh: $tool is not built" >&2; exit 1; }
done
command -v valgrind > /dev/null || { echo "instructions.sh: valgrind is not installed" >&2; exit 1; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/root"

# Five faces with what every stage has work for (spots in two zones, a scratch across the
# core), each fiber so near the frame's edge that the window around it is held inside the
# frame: the fiber is off the window's middle, and every inspection paints its zone map.
centers=(400,450 1200,800 450,780 1180,420 700,400)
for ((i = 0; i < 5; ++i)); do
    IFS=, read -r x y <<< "${centers[$i]}"
    "$render" --root "$work/root" --seed $((i + 1)) --center "$x,$y" --format raw \
        --spot-at 30,40,5,30 --spot-at 45,200,8,40,bright \
        --scratch $((x - 120)),$((y - 90)),$((x + 130)),$((y + 110)),3,25 "$work/frame$i" > /dev/null
done

# The stages: a name and the function whose inclusive count is the stage's.
stages=(
    "load|loadRawFrame\("
    "search|[^:]:searchSingleFiber\("
    "window|SingleFiberInspection::cutWindow\("
    "zone map|[^:]:initSectionMapByTaskInfoSF\("
    "clearing|MeasureSingleFiberThread::clearForRun\("
    "defects|[^:]:AlgGetFiberDefect\("
    "scratches|[^:]:FindSectionScratch\("
    "overlay|[^:]:drawOverlayImageSF\("
)

# Runs the tool on the first `frames` frames; leaves the profile in $work/profile.N.
profile() {
    local frames=$1 inputs=()
    for ((i = 0; i < frames; ++i)); do inputs+=("$work/frame$i"); done
    LUMASPECTER_ROOT="$work/root" valgrind --tool=callgrind \
        --callgrind-out-file="$work/profile.$frames" \
        "$inspect" --root "$work/root" --jobs 1 "${inputs[@]}" > /dev/null 2> "$work/log.$frames"
}

# The program's total, or a function's inclusive count (summed over its entries), of a profile.
total() {
    callgrind_annotate "$work/profile.$1" 2> /dev/null | awk '/PROGRAM TOTALS/ { gsub(",", "", $1); print $1 }'
}
inclusive() {
    callgrind_annotate --inclusive=yes --threshold=100 "$work/profile.$1" 2> /dev/null |
        grep -E "$2" | awk '{ gsub(",", "", $1); n += $1 } END { print n + 0 }'
}

per_inspection() {
    awk -v one="$1" -v five="$2" 'BEGIN { printf "%8.2f", (five - one) / 4 / 1e6 }'
}

profile 1
profile 5
printf "%-12s %8s  (millions of instructions per inspection)\n" "stage" "count"
for stage in "${stages[@]}"; do
    name=${stage%%|*}
    pattern=${stage#*|}
    printf "%-12s %s\n" "$name" "$(per_inspection "$(inclusive 1 "$pattern")" "$(inclusive 5 "$pattern")")"
done
printf "%-12s %s\n" "inspection" "$(per_inspection "$(total 1)" "$(total 5)")"
