#!/usr/bin/env bash
# hbbtv-browser on the bundled sample, headless: the time from the first AIT section posted
# to the application's first paint, and the memory (proportional set size) of the browser
# and its WebKit processes, over several runs (the median and the range).
#   bench/browser_cost.sh BUILD_DIR [RUNS]
set -euo pipefail
build=${1:?usage: browser_cost.sh BUILD_DIR [RUNS]}
runs=${2:-5}
browser="$build/tools/hbbtv-browser"

measure() {
    local label=$1; shift
    local paints=() memory=()
    for _ in $(seq "$runs"); do
        out=$(xvfb-run -a "$browser" --exit-after 100 "$@" 2>/dev/null)
        paints+=("$(sed -n 's/.*first paint in .*: \([0-9]*\) ms after.*/\1/p' <<<"$out")")
        memory+=("$(sed -n 's/.* \([0-9]*\) KiB in all/\1/p' <<<"$out")")
    done
    median() { printf '%s\n' "$@" | sort -n | awk '{a[NR]=$1} END {print a[int((NR+1)/2)] " (" a[1] "-" a[NR] ")"}'; }
    echo "$label: first paint $(median "${paints[@]}") ms, memory $(median "${memory[@]}") KiB (proportional set size, all processes)"
}

measure "sample, broadband down (carousel at once)" --no-broadband
measure "sample, broadband unreachable (fails over)"
