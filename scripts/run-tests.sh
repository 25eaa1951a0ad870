#!/usr/bin/env bash
# Builds everything with warnings as errors and runs the whole test suite.
# RYN_SANITIZE=1 builds and runs it under AddressSanitizer and UBSan instead;
# RYN_BUILD_TYPE=Debug|Release|RelWithDebInfo chooses the build type (default
# RelWithDebInfo); RYN_ARCH=i386 builds and runs it as 32-bit Linux programs
# (gcc -m32, cmake/toolchains/linux-i386.cmake) instead of x86-64 ones. Each
# combination builds in a folder of its own: build, build-debug,
# build-sanitize, build-i386, build-i386-debug-sanitize, ...
set -eu
cd "$(dirname "$0")/.."
arch=${RYN_ARCH:-}
type=${RYN_BUILD_TYPE:-RelWithDebInfo}
dir=build
flags=(-DCMAKE_BUILD_TYPE="$type" -DRYN_BUILD_BENCH=ON)
case "$arch" in
  "" | x86_64 | amd64) scripts/setup-deps.sh ;;
  i386)
    scripts/setup-deps.sh i386
    dir=build-i386
    # GoogleTest is built from its sources with -m32; libsndfile and Google
    # Benchmark are used when their i386 libraries are installed (without
    # libsndfile rynctl keeps to 8 kHz mono WAV and raw G.711 files).
    flags+=(-DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/toolchains/linux-i386.cmake" -DRYN_GTEST_SOURCE_DIR=/usr/src/googletest)
    [ -f /usr/lib/i386-linux-gnu/cmake/benchmark/benchmarkConfig.cmake ] || flags+=(-DRYN_BUILD_BENCH=OFF)
    ;;
  *) echo "RYN_ARCH: x86_64 (the default) or i386, not \"$arch\"" >&2; exit 2 ;;
esac
[ "$type" = RelWithDebInfo ] || dir="$dir-$(echo "$type" | tr '[:upper:]' '[:lower:]')"
if [ "${RYN_SANITIZE:-0}" = 1 ]; then dir="$dir-sanitize"; flags+=(-DRYN_SANITIZE=ON); fi
cmake -S . -B "$dir" -G Ninja -DRYN_BUILD_TESTS=ON "${flags[@]}" >/dev/null
cmake --build "$dir" -j2
ctest --test-dir "$dir" --output-on-failure -j2
