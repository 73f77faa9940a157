#!/usr/bin/env bash
# Peak memory of hbbtv-sim playing a real capture and the same capture 30 times over: the
# stream is read a chunk at a time, so the figure should not grow with the file.
#   bench/capture_memory.sh BUILD_DIR   (BUILD_DIR: build/bench)
set -euo pipefail
build=$1
capture=$(dirname "$0")/../../shared/data/captures/rai-dtt-hbbtv.ts
[ -f "$capture" ] || { echo "capture_memory: ../shared/data is not beside this checkout"; exit 0; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for _ in $(seq 30); do cat "$capture"; done >"$work/thirty.ts"
for file in "$capture" "$work/thirty.ts"; do
    peak=$("$build/bench/peak_memory" "$build/tools/hbbtv-sim" "$file" --idle-ticks 1 2>/dev/null | tail -n 1)
    printf '%-16s %6d MB  peak %6d KiB\n' "$(basename "$file")" "$(( $(stat -c %s "$file") / 1000000 ))" "$peak"
done
