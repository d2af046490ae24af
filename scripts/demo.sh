#!/usr/bin/env bash
# Sets up and builds the project, renders a sample end-face frame with dirt and a scratch, and
# inspects it as the instrument does after a trigger.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
"$top/scripts/setup.sh"
"$top/scripts/build.sh" "$top/build"

out="$top/out/demo"
mkdir -p "$out"
export LUMASPECTER_ROOT="$out/root"
frame="$out/sample-frame.raw"

"$top/build/tools/lumaspecter-render/lumaspecter-render" --seed 7 --center 742,561 \
    --spot-at 20,30,6,40 --spot-at 45,200,12,25,bright --spot-at 90,300,8,60 \
    --scratch 690,470,840,660,2.5,30 --format raw "$frame"
echo "Rendered $frame (truth in $frame.json)"
"$top/build/tools/lumaspecter-inspect/lumaspecter-inspect" --overlay "$out" "$frame"
echo "Overlay: $out/sample-frame-overlay.png, measured image: $out/sample-frame-measured.png"
