#!/usr/bin/env bash
# Installs the build tools and libraries when they are missing (Debian; needs root).
#   setup-deps.sh          everything the build and the tests need
#   setup-deps.sh build    only what building the library, the board and rynctl needs
#   setup-deps.sh docs     that, and Doxygen for the API reference (the `docs` target)
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
if [ "$mode" = all ]; then
  [ -f /usr/include/gtest/gtest.h ] || need+=(libgtest-dev)
  [ -f /usr/include/gmock/gmock.h ] || need+=(libgmock-dev)
  [ -f /usr/include/benchmark/benchmark.h ] || need+=(libbenchmark-dev)
fi
if [ "$mode" = docs ]; then
  command -v doxygen >/dev/null || need+=(doxygen)
fi
if [ ${#need[@]} -gt 0 ]; then
  if [ "$(id -u)" -ne 0 ]; then
    echo "missing packages: ${need[*]} (run as root to install them with apt-get)" >&2
    exit 1
  fi
  apt-get update -qq
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "${need[@]}"
fi
