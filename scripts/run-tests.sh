#!/usr/bin/env bash
# Builds everything with warnings as errors and runs the whole test suite.
# RYN_SANITIZE=1 builds and runs it under AddressSanitizer and UBSan instead;
# RYN_SANITIZE=thread builds the test programs under ThreadSanitizer and runs
# the tests where threads meet (events and waits, application queues,
# handles closed under calls in flight, the board under several threads);
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
case "${RYN_SANITIZE:-0}" in
  0) ;;
  1) dir="$dir-sanitize"; flags+=(-DRYN_SANITIZE=ON) ;;
  thread)
    dir="$dir-tsan"
    flags+=(-DRYN_TSAN=ON -DRYN_BUILD_BENCH=OFF)
    cmake -S . -B "$dir" -G Ninja -DRYN_BUILD_TESTS=ON "${flags[@]}" >/dev/null
    cmake --build "$dir" -j2 --target ryn_tests ryn_virtual_tests
    # halt_on_error: a race fails the test that met it.
    TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1 ${TSAN_OPTIONS:-}" \
      ctest --test-dir "$dir" --output-on-failure -j2 \
      -R '^(EventObjects|HandleLifetime|AppQueues|OsaThreads|OsaDevice|DriverEventCalls)\.|^VirtualBoardTest\.(Threads|EventQueues|EventsClosed)|^ClockTest\.'
    exit 0 ;;
  *) echo "RYN_SANITIZE: 0, 1 (AddressSanitizer and UBSan) or thread, not \"$RYN_SANITIZE\"" >&2; exit 2 ;;
esac
cmake -S . -B "$dir" -G Ninja -DRYN_BUILD_TESTS=ON "${flags[@]}" >/dev/null
cmake --build "$dir" -j2
ctest --test-dir "$dir" --output-on-failure -j2
