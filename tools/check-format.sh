#!/usr/bin/env bash
# Checks that every C and C++ file of the repository is laid out as .clang-format says; with
# --fix, lays them out so.
set -euo pipefail
cd "$(dirname "$0")/.."
mapfile -t files < <(git ls-files '*.cpp' '*.h' '*.c')
if [ "${1:-}" = --fix ]; then
    clang-format -i "${files[@]}"
    exit 0
fi
if ! clang-format --dry-run --Werror "${files[@]}" 2>/tmp/format-check.$$; then
    grep -E "^[^ ].*: (error|warning):" /tmp/format-check.$$ | cut -d: -f1 | sort -u | sed 's/^/not formatted: /'
    rm -f /tmp/format-check.$$
    echo "run: bash tools/check-format.sh --fix" >&2
    exit 1
fi
rm -f /tmp/format-check.$$
echo "format: ${#files[@]} files as .clang-format says"
