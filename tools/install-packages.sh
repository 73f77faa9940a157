#!/usr/bin/env bash
# Installs what the project builds and tests with, from Debian 12's packages (as root, or
# through sudo). With --ci, also what the whole CI matrix needs: clang, clang-format and its
# sanitizer runtime, the armhf cross compiler and qemu, Google Benchmark and valgrind.
set -euo pipefail
packages=(cmake ninja-build g++ pkg-config libglib2.0-dev libgtest-dev libgmock-dev libdvbpsi-dev libpugixml-dev zlib1g-dev tshark
          libwebkit2gtk-4.1-dev libjson-glib-dev libxml2-dev xvfb xauth fonts-dejavu-core
          gstreamer1.0-plugins-good gstreamer1.0-plugins-bad gstreamer1.0-libav gstreamer1.0-plugins-ugly gstreamer1.0-tools python3)
if [ "${1:-}" = --ci ]; then
    packages+=(clang clang-format libclang-rt-14-dev googletest libbenchmark-dev g++-arm-linux-gnueabihf qemu-user valgrind)
fi
as_root=()
[ "$(id -u)" = 0 ] || as_root=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -q -o DPkg::Lock::Timeout=120 >/dev/null
"${as_root[@]}" apt-get install -y -q --no-install-recommends -o DPkg::Lock::Timeout=120 "${packages[@]}" >/dev/null
