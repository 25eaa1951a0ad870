#!/usr/bin/env bash
# Builds everything with warnings as errors and runs the whole test suite.
# RYN_SANITIZE=1 builds and runs it under AddressSanitizer and UBSan instead;
# RYN_BUILD_TYPE=Debug|Release|RelWithDebInfo chooses the build type (default
# RelWithDebInfo). Each combination builds in a folder of its own.
set -eu
cd "$(dirname "$0")/.."
scripts/setup-deps.sh
type=${RYN_BUILD_TYPE:-RelWithDebInfo}
dir=build
flags=(-DCMAKE_BUILD_TYPE="$type")
[ "$type" = RelWithDebInfo ] || dir="build-$(echo "$type" | tr '[:upper:]' '[:lower:]')"
if [ "${RYN_SANITIZE:-0}" = 1 ]; then dir="$dir-sanitize"; flags+=(-DRYN_SANITIZE=ON); fi
cmake -S . -B "$dir" -G Ninja -DRYN_BUILD_TESTS=ON -DRYN_BUILD_BENCH=ON "${flags[@]}" >/dev/null
cmake --build "$dir" -j2
ctest --test-dir "$dir" --output-on-failure -j2
