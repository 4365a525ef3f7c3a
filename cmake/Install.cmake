# SPDX-License-Identifier: MIT
# The library, its header, the pkg-config file and the CMake package. The tools install themselves.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/nimba_mgmt_interface)
install(TARGETS nimba_mgmt_interface EXPORT nimba_mgmt_interface
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        COMPONENT library NAMELINK_COMPONENT development)
install(FILES ${NIMBA_HEADER_DIR}/nimba_mgmt_interface.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(EXPORT nimba_mgmt_interface NAMESPACE nimba:: DESTINATION ${package_dir}
        FILE nimba_mgmt_interface-targets.cmake COMPONENT development)

configure_package_config_file(cmake/nimba_mgmt_interface-config.cmake.in
    ${CMAKE_BINARY_DIR}/nimba_mgmt_interface-config.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/nimba_mgmt_interface-config-version.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/nimba_mgmt_interface-config.cmake
              ${CMAKE_BINARY_DIR}/nimba_mgmt_interface-config-version.cmake
        DESTINATION ${package_dir} COMPONENT development)

# The pkg-config file finds the prefix from its own place, so that an installed tree can be moved.
file(RELATIVE_PATH NIMBA_PREFIX_FROM_PKG_CONFIG
     /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(cmake/nimba_mgmt_interface.pc.in ${CMAKE_BINARY_DIR}/nimba_mgmt_interface.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/nimba_mgmt_interface.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
