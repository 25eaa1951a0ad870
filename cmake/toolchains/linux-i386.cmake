# 32-bit Linux (i386) on an x86-64 Debian host with gcc's multilib support
# (g++-multilib): every C and C++ object, program and library is built with
# -m32, libraries are looked for among the i386 ones, and pkg-config sees only
# the i386 .pc files, so that a library that has no i386 build here is
# reported missing instead of being taken in its 64-bit form.
#
#   cmake -S . -B build-i386 -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/linux-i386.cmake
#
# The programs built run on the host itself (an x86-64 kernel runs i386
# programs). CMake runs a program of a cross build (a build-time generator, a
# test) only through an emulator, so the "emulator" is env, which runs it as
# it is.
set(CMAKE_CROSSCOMPILING_EMULATOR env)
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)

set(CMAKE_C_COMPILER gcc)
set(CMAKE_CXX_COMPILER g++)
# Floating point in SSE2 registers, as on x86-64: each double operation is
# rounded to a double. The x87 default keeps wider intermediates, which
# changes the tone coefficients and lets an angle that overflows a double pass
# as finite (src/blocks/ToneMath.cpp refuses to build so).
set(CMAKE_C_FLAGS_INIT "-m32 -msse2 -mfpmath=sse")
set(CMAKE_CXX_FLAGS_INIT "-m32 -msse2 -mfpmath=sse")
set(CMAKE_EXE_LINKER_FLAGS_INIT -m32)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -m32)
set(CMAKE_MODULE_LINKER_FLAGS_INIT -m32)

# Debian's multiarch folder of the i386 libraries.
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/i386-linux-gnu/pkgconfig:/usr/share/pkgconfig)
