#!/usr/bin/env bash
# Installs the build tools and libraries when they are missing (Debian; needs root).
# With "build" only what building the library, the board and rynctl needs.
set -eu
only_build=0
[ "${1:-}" = build ] && only_build=1
need=()
command -v cmake >/dev/null || need+=(cmake)
command -v ninja >/dev/null || need+=(ninja-build)
command -v g++ >/dev/null || need+=(g++)
command -v nm >/dev/null || need+=(binutils)
command -v pkg-config >/dev/null || need+=(pkgconf)
command -v cc >/dev/null || need+=(gcc)
if [ $only_build = 0 ]; then
  [ -f /usr/include/gtest/gtest.h ] || need+=(libgtest-dev)
  [ -f /usr/include/gmock/gmock.h ] || need+=(libgmock-dev)
  [ -f /usr/include/benchmark/benchmark.h ] || need+=(libbenchmark-dev)
fi
if [ ${#need[@]} -gt 0 ]; then
  if [ "$(id -u)" -ne 0 ]; then
    echo "missing packages: ${need[*]} (run as root to install them with apt-get)" >&2
    exit 1
  fi
  apt-get update -qq
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "${need[@]}"
fi
