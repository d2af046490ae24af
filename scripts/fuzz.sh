#!/usr/bin/env bash
# Builds the fuzz targets with clang and runs each for a while.
#   fuzz.sh [SECONDS]   (60 by default, for each target)
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
seconds=${1:-60}
"$top/scripts/setup.sh"

build_dir="$top/build-fuzz"
CC=clang CXX=clang++ "$top/scripts/build.sh" "$build_dir" -DLUMASPECTER_FUZZ=ON
export LSAN_OPTIONS="suppressions=$top/tests/fuzz/lsan.supp"

# Seeds: the factory task file, and small pictures of each format the tools read (made with
# Debian's python3-pil), so that the fuzzer starts from inputs that reach the decoders.
mkdir -p "$build_dir/corpus/taskfile" "$build_dir/corpus/frameloading"
cp "$top/ui/resources/conf/taskinfo.conf" "$build_dir/corpus/taskfile/factory.json"
/usr/bin/python3 - "$build_dir/corpus/frameloading" <<'PY'
import sys
from PIL import Image
folder = sys.argv[1]
gray = Image.new("L", (16, 12), 90)
gray.putpixel((3, 4), 200)
gray.save(folder + "/gray.png")
gray.save(folder + "/gray.bmp")
gray.save(folder + "/gray.tif")
Image.new("RGB", (8, 8), (1, 2, 3)).save(folder + "/color.png")
Image.new("I;16", (8, 8), 1000).save(folder + "/deep.tif")
PY

# Runs one target for the given time on its corpus; shows the end of its log when it fails.
run_target() {
    local name=$1
    shift
    (cd "$build_dir" && "$build_dir/tests/fuzz/fuzz_$name" -max_total_time="$seconds" -timeout=10 \
        -rss_limit_mb=4096 "$@" "$build_dir/corpus/$name" > "$build_dir/fuzz_$name.log" 2>&1) \
        || { tail -n 40 "$build_dir/fuzz_$name.log"; exit 1; }
    echo "fuzz_$name: $(grep -E "^Done|DONE" "$build_dir/fuzz_$name.log" || tail -n 1 "$build_dir/fuzz_$name.log")"
}

run_target taskfile
run_target frameloading -max_len=65536
