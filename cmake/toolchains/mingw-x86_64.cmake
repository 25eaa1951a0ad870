# 64-bit Windows (x86-64) with mingw-w64 on a Debian host
# (apt-get install g++-mingw-w64-x86-64 wine64):
#
#   cmake -S . -B build-win64 -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/mingw-x86_64.cmake \
#         -DRYN_GTEST_SOURCE_DIR=/usr/src/googletest
#
# The compilers of the posix thread model, whose runtime has std::thread and
# std::mutex. Programs and DLLs take the compiler's runtime (libgcc,
# libstdc++, winpthread) in statically, so that they need no DLL beside them
# but the system's and the library's. Programs of the build (the module
# image generator, the tests) run under wine64 through wine-run.sh.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(RYN_MINGW_TRIPLE x86_64-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-common.cmake)
