#!/usr/bin/env bash
# Installs the build tools and libraries when they are missing (Debian; needs root).
#   setup-deps.sh          everything the build and the tests need
#   setup-deps.sh build    only what building the library, the board and rynctl needs
#   setup-deps.sh docs     that, and Doxygen for the API reference (the `docs` target)
#   setup-deps.sh i386     everything, and what the 32-bit build (RYN_ARCH=i386 run-tests.sh) needs
#   setup-deps.sh fuzz     what building the library needs, and clang for the fuzzers (scripts/fuzz.sh)
set -eu
mode=${1:-all}
need=()
command -v cmake >/dev/null || need+=(cmake)
command -v ninja >/dev/null || need+=(ninja-build)
command -v g++ >/dev/null || need+=(g++)
command -v nm >/dev/null || need+=(binutils)
command -v pkg-config >/dev/null || need+=(pkgconf)
command -v cc >/dev/null || need+=(gcc)
# rynctl: its command-line parser and the audio file libraries
[ -f /usr/include/CLI/CLI.hpp ] || need+=(libcli11-dev)
[ -f /usr/include/sndfile.h ] || need+=(libsndfile1-dev)
[ -f /usr/include/samplerate.h ] || need+=(libsamplerate0-dev)
if [ "$mode" = all ] || [ "$mode" = i386 ]; then
  [ -f /usr/include/gtest/gtest.h ] || need+=(libgtest-dev)
  [ -f /usr/include/gmock/gmock.h ] || need+=(libgmock-dev)
  [ -f /usr/include/benchmark/benchmark.h ] || need+=(libbenchmark-dev)
  # The reference DSP library the board's receivers are measured against
  # (bench/board/ReceiverBench.cpp); a build without it leaves that out.
  [ -f /usr/include/spandsp/dtmf.h ] || need+=(libspandsp-dev)
fi
if [ "$mode" = docs ]; then
  command -v doxygen >/dev/null || need+=(doxygen)
fi
# The fuzzers: clang, whose package brings libFuzzer and the sanitizers' runtimes.
if [ "$mode" = fuzz ]; then
  command -v clang++ >/dev/null || need+=(clang)
fi
# The 32-bit build: gcc's -m32 with the i386 C and C++ runtimes, and
# GoogleTest's sources, built with -m32 inside the build. The i386 libraries of
# rynctl's audio files and of the benchmarks are wanted but not needed (see
# below): without them the build leaves them out.
installed() { dpkg-query -W -f='${Status}' "$1" 2>/dev/null | grep -q ' installed$'; }
want=()
if [ "$mode" = i386 ]; then
  installed g++-multilib || need+=(g++-multilib)
  [ -f /usr/src/googletest/CMakeLists.txt ] || need+=(googletest)
  for package in libsndfile1-dev:i386 libsamplerate0-dev:i386 libbenchmark-dev:i386; do
    installed "$package" || want+=("$package")
  done
fi
if [ ${#need[@]} -gt 0 ] || [ ${#want[@]} -gt 0 ]; then
  if [ "$(id -u)" -ne 0 ]; then
    if [ ${#need[@]} -gt 0 ]; then
      echo "missing packages: ${need[*]} (run as root to install them with apt-get)" >&2
      exit 1
    fi
    echo "not installed, built without: ${want[*]} (run as root to install them with apt-get)" >&2
    exit 0
  fi
  if [ ${#want[@]} -gt 0 ] && ! dpkg --print-foreign-architectures | grep -qx i386; then
    dpkg --add-architecture i386
  fi
  # An index that fails to download (a mirror in sync) leaves the old one in
  # use; a package really missing fails the install below.
  apt-get update -qq || echo "apt-get update failed; going on with the package lists there are" >&2
  [ ${#need[@]} -eq 0 ] || DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "${need[@]}"
  # The i386 forms of Debian's libraries can be out of step with the x86-64
  # ones installed; the build then does without them.
  if [ ${#want[@]} -gt 0 ] && ! DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${want[@]}"; then
    echo "could not install ${want[*]}: rynctl keeps to 8 kHz mono WAV and raw G.711 files, the benchmarks are not built" >&2
  fi
fi
