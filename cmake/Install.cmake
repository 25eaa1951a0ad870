# The installable package: the headers under include/ryn/, the shared library
# with its version links and the static library, the virtual board's driver
# module beside the shared library (ryn-drivers/, where the library looks),
# rynctl with its manual page, a pkg-config file and a CMake package giving
# RynHwDll::RynHwDll and RynHwDll::RynHwDllStatic.
#
# The headers live in a folder of their own: Osa.h is a common name, and it
# defines INVALID_HANDLE_VALUE. pkg-config and the CMake package put that
# folder on the include path, so programs write #include "RynHwDll.h".
include(CMakePackageConfigHelpers)

set(RYN_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/RynHwDll)
set(RYN_INSTALL_HEADERDIR ${CMAKE_INSTALL_INCLUDEDIR}/ryn)

install(TARGETS RynHwDll RynHwDllStatic EXPORT RynHwDllTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} NAMELINK_COMPONENT Development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${RYN_INSTALL_HEADERDIR})
install(FILES include/RynHwDll.h include/Osa.h include/RynUserDriver.h include/RynVirtualBoard.h
  DESTINATION ${RYN_INSTALL_HEADERDIR})
install(TARGETS RynVirtualBoard LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/ryn-drivers)
install(CODE "file(CREATE_LINK ryndrv.so \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/ryn-drivers/rynnet.so\" SYMBOLIC)")
install(TARGETS rynctl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

# The pkg-config files find the prefix from their own place, so that the tree
# may be installed anywhere (cmake --install --prefix, DESTDIR); the shared
# library's folder goes into the program as its run path, so a program built
# with `pkg-config --libs ryn-hw` finds the library without LD_LIBRARY_PATH.
file(RELATIVE_PATH RYN_PC_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" RYN_PC_TO_PREFIX "${RYN_PC_TO_PREFIX}")
foreach(pc ryn-hw ryn-hw-static)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/${pc}.pc.in ${CMAKE_BINARY_DIR}/${pc}.pc @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/${pc}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()

install(EXPORT RynHwDllTargets NAMESPACE RynHwDll:: DESTINATION ${RYN_INSTALL_CMAKEDIR})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/RynHwDllConfig.cmake.in
  ${CMAKE_BINARY_DIR}/RynHwDllConfig.cmake INSTALL_DESTINATION ${RYN_INSTALL_CMAKEDIR})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/RynHwDllConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/RynHwDllConfig.cmake ${CMAKE_BINARY_DIR}/RynHwDllConfigVersion.cmake
  DESTINATION ${RYN_INSTALL_CMAKEDIR})
