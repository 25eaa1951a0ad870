# The installable package: headers, the library with its version links, the
# virtual board's driver module beside it (ryn-drivers/, where the library
# looks), rynctl, a pkg-config file and a CMake package giving
# RynHwDll::RynHwDll.
include(CMakePackageConfigHelpers)

set(RYN_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/RynHwDll)

install(TARGETS RynHwDll EXPORT RynHwDllTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} NAMELINK_COMPONENT Development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES include/RynHwDll.h include/Osa.h include/RynUserDriver.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS RynVirtualBoard LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/ryn-drivers)
install(CODE "file(CREATE_LINK ryndrv.so \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/ryn-drivers/rynnet.so\" SYMBOLIC)")
install(TARGETS rynctl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

# The pkg-config file finds the prefix from its own place, so that the tree
# may be installed anywhere (cmake --install --prefix, DESTDIR).
file(RELATIVE_PATH RYN_PC_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" RYN_PC_TO_PREFIX "${RYN_PC_TO_PREFIX}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/ryn-hw.pc.in ${CMAKE_BINARY_DIR}/ryn-hw.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/ryn-hw.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(EXPORT RynHwDllTargets NAMESPACE RynHwDll:: DESTINATION ${RYN_INSTALL_CMAKEDIR})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/RynHwDllConfig.cmake.in
  ${CMAKE_BINARY_DIR}/RynHwDllConfig.cmake INSTALL_DESTINATION ${RYN_INSTALL_CMAKEDIR})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/RynHwDllConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/RynHwDllConfig.cmake ${CMAKE_BINARY_DIR}/RynHwDllConfigVersion.cmake
  DESTINATION ${RYN_INSTALL_CMAKEDIR})
