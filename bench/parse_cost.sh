#!/usr/bin/env bash
# Instructions (callgrind) and heap allocations of parsing each AIT case into a fresh table,
# beside a bounds-checked walk over the same bytes. Instruction counts do not depend on what
# else the machine is doing.
#   bench/parse_cost.sh BENCH_DIR [--check]   (BENCH_DIR: build/bench/bench)
# Allocations come from parse_cost, instructions from parse_cost_ir (no counting operator
# new). With --check it fails when a case costs more than 5 walks or 3 allocations per
# application entry.
set -euo pipefail
program=$1/parse_cost
measured=$1/parse_cost_ir
check=${2:-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

instructions() {
    valgrind --tool=callgrind --callgrind-out-file="$work/out" --toggle-collect='*measured*' \
        "$measured" "$1" "$2" >/dev/null 2>&1
    sed -n 's/^totals: *//p' "$work/out" | awk '{print $1}'
}

failed=0
printf '%-16s %5s %6s %10s %9s %6s %8s %11s\n' case apps bytes parse walk ratio allocs allocs/app
while read -r name apps allocations bytes status; do
    parse=$(instructions "$name" parse)
    walk=$(instructions "$name" walk)
    ratio=$(awk -v p="$parse" -v w="$walk" 'BEGIN { printf "%.1f", p / w }')
    per_app=$(awk -v a="$allocations" -v n="$apps" 'BEGIN { if (n > 0) printf "%.1f", a / n; else print "-" }')
    printf '%-16s %5s %6s %10s %9s %6s %8s %11s %s\n' "$name" "$apps" "$bytes" "$parse" "$walk" "$ratio" \
        "$allocations" "$per_app" "$([ "$status" = ok ] || echo "(refused)")"
    if awk -v r="$ratio" -v a="$per_app" 'BEGIN { exit !(r > 5 || (a != "-" && a > 3)) }'; then
        failed=1
    fi
done < <("$program")
if [ "$check" = --check ] && [ "$failed" = 1 ]; then
    echo "parse cost: a case is over 5 walks or 3 allocations per application"
    exit 1
fi
