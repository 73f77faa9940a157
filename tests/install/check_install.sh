#!/bin/sh
# Installs the library into a scratch prefix and builds a consumer against it twice:
# once through find_package, once through pkg-config.
set -eu
build=$1
here=$2
prefix=$build/install-check/prefix
rm -rf "$build/install-check"
cmake --install "$build" --prefix "$prefix" >/dev/null

cmake -S "$here/consumer" -B "$build/install-check/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$build/install-check/cmake" >/dev/null

PKG_CONFIG_PATH=$prefix/lib/pkgconfig
export PKG_CONFIG_PATH
${CC:-cc} -o "$build/install-check/pkgconfig-consumer" "$here/consumer/consumer.c" \
    $(pkg-config --cflags --libs tesmo_hbbtv) -Wl,--unresolved-symbols=ignore-in-shared-libs
echo "install, find_package and pkg-config: ok"
