#!/usr/bin/env bash
# Fuzzes every target for SECONDS each (default 60) under ASan/UBSan with leak detection;
# fails on any crash, leak or sanitizer report. Inputs that fail are left in
# build/fuzz/artifacts: add each to the target's corpus once it is fixed.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}

cmake --preset fuzz >/dev/null
cmake --build --preset fuzz

build=build/fuzz
shared=../shared/data
real=$build/seeds-real
eit=$build/seeds-eit
rm -rf "$real" "$eit" "$build/work" && mkdir -p "$real" "$eit" "$build/artifacts"
if [ -d "$shared/captures" ] && [ -x "$build/tests/extract_sections" ]; then
    "$build/tests/extract_sections" "$shared/captures/abc-au-hbbtv.ts" 0x157C "$real"
    "$build/tests/extract_sections" "$shared/captures/rai-dtt-hbbtv.ts" 0x07D2 "$real"
    "$build/tests/extract_sections" "$shared/captures/rai-dtt-hbbtv.ts" 0x07D1 "$real"
    "$build/tests/extract_sections" "$shared/captures/mediaset-sat-mhp.ts" 0x1EC6 "$real"
    "$build/tests/extract_sections" "$shared/captures/rai-dtt-hbbtv.ts" 0x0102 "$real"
    "$build/tests/extract_sections" "$shared/captures/rai-dtt-hbbtv.ts" 0x0012 "$eit"
fi

total=0
for target in $(ls fuzz/corpus); do
    [ -x "$build/fuzz/$target" ] || continue
    mkdir -p "$build/work/$target"
    seeds=("fuzz/corpus/$target")
    case $target in
        fuzz_ait_sections|fuzz_pmt) seeds+=("$real"); [ -d "$shared/sections" ] && seeds+=("$shared/sections") ;;
        fuzz_eit) seeds+=("$eit") ;;
    esac
    log=$build/work/$target.log
    echo "== $target: ${seconds}s"
    if ! ASAN_OPTIONS=detect_leaks=1:halt_on_error=1 UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 \
        "$build/fuzz/$target" -max_total_time="$seconds" -print_final_stats=1 -timeout=10 -rss_limit_mb=2048 \
        -artifact_prefix="$build/artifacts/$target-" "$build/work/$target" "${seeds[@]}" >"$log" 2>&1; then
        tail -n 60 "$log"
        echo "FAILED: $target (inputs in $build/artifacts)"
        exit 1
    fi
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -n 1)
    echo "   $runs executions, corpus $(ls "$build/work/$target" | wc -l) inputs"
    total=$((total + ${runs:-0}))
done
echo "fuzzing: $total executions in all, no finding"
