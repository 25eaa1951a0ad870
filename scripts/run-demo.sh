#!/usr/bin/env bash
# Builds the library, the virtual board and rynctl, then runs `rynctl demo`:
# the library at work on the virtual board (see `rynctl demo --help`).
set -eu
cd "$(dirname "$0")/.."
scripts/setup-deps.sh build
cmake -S . -B build -G Ninja -DRYN_BUILD_TESTS=OFF >/dev/null
cmake --build build -j2 --target rynctl RynVirtualBoard
build/bin/rynctl demo
