# SPDX-License-Identifier: MIT
# The numeric identifiers that a board vendor may choose: -DNIMBA_VENDOR_ID=0x1234 and so on.
# The defaults stand in include/nimba_mgmt_interface.h alone; what is compiled and installed is a
# copy of that header with the chosen values.
set(NIMBA_IDENTIFIERS
    NIMBA_VENDOR_ID QV_VENDOR_ID
    DEVICE_ID_NIMBA_K1 DEVICE_ID_NIMBA_K2 DEVICE_ID_NIMBA_K3 DEVICE_ID_NIMBA_K3T
    DEVICE_ID_NIMBA_K5 DEVICE_ID_NIMBA_K6
    DEVICE_ID_QV_M20 DEVICE_ID_QV_M30 DEVICE_ID_QV_M40)

set(NIMBA_HEADER_DIR ${CMAKE_BINARY_DIR}/${CMAKE_INSTALL_INCLUDEDIR})
set(header_source ${CMAKE_SOURCE_DIR}/include/nimba_mgmt_interface.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header_source})
file(READ ${header_source} header_text)

set(NIMBA_PKG_CONFIG_IDENTIFIERS "")
set(NIMBA_PACKAGE_IDENTIFIERS "")
foreach(name IN LISTS NIMBA_IDENTIFIERS)
    if(NOT header_text MATCHES "#define ${name} (0x[0-9A-F]+)\n")
        message(FATAL_ERROR "${header_source} does not define ${name}")
    endif()
    set(${name} ${CMAKE_MATCH_1} CACHE STRING "PCI identifier, four hexadecimal digits")
    if(NOT ${name} MATCHES "^0x[0-9A-Fa-f][0-9A-Fa-f][0-9A-Fa-f][0-9A-Fa-f]$")
        message(FATAL_ERROR "${name} is \"${${name}}\"; a PCI identifier looks like 0x1234")
    endif()
    string(REGEX REPLACE "(#define ${name}) 0x[0-9A-F]+\n" "\\1 ${${name}}\n"
           header_text "${header_text}")
    string(APPEND NIMBA_PKG_CONFIG_IDENTIFIERS "${name}=${${name}}\n")
    string(APPEND NIMBA_PACKAGE_IDENTIFIERS "set(nimba_mgmt_interface_${name} ${${name}})\n")
endforeach()

file(CONFIGURE OUTPUT ${NIMBA_HEADER_DIR}/nimba_mgmt_interface.h CONTENT "${header_text}" @ONLY)
