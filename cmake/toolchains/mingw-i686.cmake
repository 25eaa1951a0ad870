# 32-bit Windows (i686) with mingw-w64 on a Debian host
# (apt-get install g++-mingw-w64-i686):
#
#   cmake -S . -B build-win32 -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/mingw-i686.cmake \
#         -DRYN_GTEST_SOURCE_DIR=/usr/src/googletest
#
# As mingw-x86_64.cmake, for 32-bit programs, which run under wine32.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(RYN_MINGW_TRIPLE i686-w64-mingw32)
# Doubles computed in SSE registers, rounded at each operation as on x86-64
# (the tone arithmetic relies on it).
set(CMAKE_C_FLAGS_INIT "-msse2 -mfpmath=sse")
set(CMAKE_CXX_FLAGS_INIT "-msse2 -mfpmath=sse")
include(${CMAKE_CURRENT_LIST_DIR}/mingw-common.cmake)
# 32-bit programs need wine's 32-bit loader (package wine32, of the i386
# architecture); wine64 alone exits with 0 without running them.
set(CMAKE_CROSSCOMPILING_EMULATOR env RYN_WINE=/usr/lib/wine/wine ${CMAKE_CURRENT_LIST_DIR}/wine-run.sh)
if(NOT EXISTS /usr/lib/wine/wine)
  message(WARNING "No 32-bit wine (dpkg --add-architecture i386; apt-get install wine32): this build's "
                  "programs cannot run here, neither the module image generator nor the tests")
endif()
