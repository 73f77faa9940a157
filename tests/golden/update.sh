#!/usr/bin/env bash
# Rewrites the golden files from the code as it is: run it only for a deliberate change of
# results, and review the diff in the same commit.
#   tests/golden/update.sh [BUILD_DIR]      (default build/default)
set -euo pipefail
root="$(cd "$(dirname "$0")/../.." && pwd)"
build="${1:-$root/build/default}"
cmake --build "$build" --target golden_dump >/dev/null
for group in $("$build/tests/golden_dump" 2>&1 | sed -n 's/.*(groups:\(.*\))/\1/p'); do
    text="$("$build/tests/golden_dump" "$group")"
    if [ -z "$text" ]; then
        echo "$group: no data here (../shared/data or libdvbpsi absent), golden file left as it is"
        continue
    fi
    printf '%s\n' "$text" > "$root/tests/golden/$group.txt"
    echo "$group: $(wc -l < "$root/tests/golden/$group.txt") lines"
done
git -C "$root" diff --stat -- tests/golden/*.txt
