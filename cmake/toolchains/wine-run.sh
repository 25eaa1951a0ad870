#!/bin/bash
# Runs a Windows program of a mingw build under wine for CMake and CTest
# (CMAKE_CROSSCOMPILING_EMULATOR of the mingw toolchain files).
#
# The C runtime writes standard output in text mode, each newline as CR LF;
# the carriage returns are dropped, so that CMake reads the lines (the test
# lists of gtest_discover_tests) as a Linux program's. Wine's own messages
# are off unless WINEDEBUG says otherwise; RYN_WINE names another wine.
export WINEDEBUG="${WINEDEBUG:--all}"
set -o pipefail
"${RYN_WINE:-/usr/lib/wine/wine64}" "$@" | tr -d '\r'
