#!/usr/bin/env bash
# Builds the library and rynctl, then prints what the library sees.
set -eu
cd "$(dirname "$0")/.."
scripts/setup-deps.sh
cmake -S . -B build -G Ninja -DRYN_BUILD_TESTS=OFF >/dev/null
cmake --build build -j2 --target rynctl
build/bin/rynctl info || true
