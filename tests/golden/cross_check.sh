#!/usr/bin/env bash
# Builds an earlier commit beside the tree with today's golden printer and compares its
# results with the golden files: every difference is a change of behaviour between the two.
#   tests/golden/cross_check.sh [COMMIT]      (default 1db7f2d, before the parse optimisation)
# The tree is built in build/cross-check/; the differences go to build/cross-check/GROUP.diff.
set -euo pipefail
root="$(cd "$(dirname "$0")/../.." && pwd)"
commit="${1:-1db7f2d}"
work="$root/build/cross-check"
tree="$work/tree"

rm -rf "$tree"
mkdir -p "$tree"
git -C "$root" archive "$commit" | tar -x -C "$tree"
# The earlier tree finds its shared data at ../shared/data, as this one does.
[ -e "$work/shared" ] || ln -s "$root/../shared" "$work/shared"
mkdir -p "$tree/tests/golden"
cp "$root"/tests/golden/*.h "$root"/tests/golden/*.cpp "$root"/tests/golden/golden.cmake "$tree/tests/golden/"
echo 'include(golden/golden.cmake)' >> "$tree/tests/CMakeLists.txt"

cmake -S "$tree" -B "$tree/build" -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$tree/build" --target golden_dump >/dev/null

status=0
for group in sections captures fuzz generated; do
    "$tree/build/tests/golden_dump" "$group" > "$work/$group.$commit.txt"
    if diff -u "$root/tests/golden/$group.txt" "$work/$group.$commit.txt" > "$work/$group.diff"; then
        echo "$group: same results as $commit"
    else
        inputs=$(awk '/^== /{name=substr($0, 4)} {text[FILENAME, name] = text[FILENAME, name] $0 "\n"; names[name]}
                      END {for (n in names) if (text[ARGV[1], n] != text[ARGV[2], n]) print "  " n}' \
                     "$root/tests/golden/$group.txt" "$work/$group.$commit.txt" | sort)
        echo "$group: results differ from $commit ($work/$group.diff) for:"
        echo "$inputs"
        status=1
    fi
done
exit $status
