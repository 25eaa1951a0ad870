# What the two mingw-w64 toolchain files share; they set RYN_MINGW_TRIPLE.
set(CMAKE_C_COMPILER ${RYN_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${RYN_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${RYN_MINGW_TRIPLE}-windres)

# Headers, libraries and packages of the target only; programs of the host.
set(CMAKE_FIND_ROOT_PATH /usr/${RYN_MINGW_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# pkg-config would report the host's libraries: it finds none for Windows.
set(ENV{PKG_CONFIG_LIBDIR} /usr/${RYN_MINGW_TRIPLE}/lib/pkgconfig)

# The compiler's runtime linked in: -static takes the static libgcc,
# libstdc++ and winpthread; the system's DLLs stay imports.
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -static)
set(CMAKE_MODULE_LINKER_FLAGS_INIT -static)

set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/wine-run.sh)
