#!/usr/bin/env bash
# Sets up and builds the project, renders a sample end-face frame and inspects it.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
"$top/scripts/setup.sh"
"$top/scripts/build.sh" "$top/build"

out="$top/out/demo"
mkdir -p "$out"
export LUMASPECTER_ROOT="$out/root"
frame="$out/sample-frame.raw"

"$top/build/tools/lumaspecter-render/lumaspecter-render" --seed 7 --center 742,561 \
    --spot-at 20,30,6,40 --spot-at 45,200,12,25,bright --scratch 700,480,800,650,2.5,18 \
    --format raw "$frame"
echo "Rendered $frame (truth in $frame.json)"
"$top/build/tools/lumaspecter-inspect/lumaspecter-inspect" "$frame"
