# SPDX-License-Identifier: MIT
# `cpack` makes a Debian package of each component that install() rules name. Included last, when all
# of them are known. scripts/package is the way to call it.
set(package_of_library libnimba-mgmt-interface${PROJECT_VERSION_MAJOR})
set(package_of_development libnimba-mgmt-interface-dev)
set(package_of_tools nimba-tools)
set(package_of_python python3-nimba-mgmt)

get_cmake_property(installed_components COMPONENTS)
if("Unspecified" IN_LIST installed_components)
    message(FATAL_ERROR "an install() rule names no COMPONENT: its files would be in no package")
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME nimba-mgmt-interface)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each description has its own
set(CPACK_PACKAGE_VENDOR "The nimba_mgmt_interface authors")
set(CPACK_PACKAGE_CONTACT "The nimba_mgmt_interface authors <nimba-mgmt-interface@nimba.example>"
    CACHE STRING "Maintainer of the Debian packages")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_SOURCE_DIR}/packaging/debian_ways.cmake)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(this_version "= ${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_DEPENDS "libdrm2, procps") # loaded and run, as is dmidecode
set(CPACK_DEBIAN_LIBRARY_PACKAGE_RECOMMENDS dmidecode)
configure_file(packaging/shlibs.in ${CMAKE_BINARY_DIR}/packaging/shlibs @ONLY)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA
    ${CMAKE_SOURCE_DIR}/packaging/triggers ${CMAKE_BINARY_DIR}/packaging/shlibs)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${package_of_library} (${this_version})")

# nimba-smi loads the library; runs of nimba-sim preload a library of umockdev, and an ordinary user's
# mount their files with fusermount3.
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS
    "${package_of_library} (${this_version}), fuse3, libdrm2, umockdev")

set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
    ${CMAKE_SOURCE_DIR}/packaging/python/postinst ${CMAKE_SOURCE_DIR}/packaging/python/prerm)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
    "${package_of_library} (>= ${PROJECT_VERSION}), python3:any (>= 3.11)")

find_program(GZIP gzip REQUIRED)

# Adds the file as share/doc/PACKAGE/NAME, compressed. It is in packages alone: whoever installs the
# build tree has the sources.
function(nimba_install_compressed component file name)
    set(output ${CMAKE_BINARY_DIR}/packaging/${component}/${name})
    configure_file(${file} ${output} COPYONLY)
    execute_process(COMMAND ${GZIP} -9nf ${output} COMMAND_ERROR_IS_FATAL ANY)
    install(FILES ${output}.gz DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package_of_${component}}
            COMPONENT ${component} EXCLUDE_FROM_ALL)
endfunction()

configure_file(packaging/changelog.in ${CMAKE_BINARY_DIR}/packaging/changelog @ONLY)
set(CPACK_COMPONENTS_ALL)
foreach(component library development tools python)
    if(NOT component IN_LIST installed_components)
        continue()
    endif()
    list(APPEND CPACK_COMPONENTS_ALL ${component})
    set(package ${package_of_${component}})
    string(TOUPPER ${component} COMPONENT)
    set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME ${package})
    file(READ packaging/descriptions/${package} CPACK_DEBIAN_${COMPONENT}_DESCRIPTION)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
                 packaging/descriptions/${package} CHANGELOG.md)
    install(FILES packaging/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package}
            COMPONENT ${component} EXCLUDE_FROM_ALL)
    nimba_install_compressed(${component} CHANGELOG.md changelog)
    nimba_install_compressed(${component} ${CMAKE_BINARY_DIR}/packaging/changelog changelog.Debian)
endforeach()

include(CPack)
