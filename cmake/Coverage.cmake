# SPDX-License-Identifier: MIT
# What scripts/coverage measures with: the library once more, instrumented and not optimised, and the
# unit tests linked with it from the objects that the build has anyway. Nothing of it is in `all`.
# The script has it included where the project begins, and runs the programs that are listed in
# coverage/programs of the build tree; coverage/shipped tells where they look for the library.
cmake_language(DEFER CALL nimba_add_coverage)

# The executables in `directory` and below that have `value` in `property`.
function(nimba_executables_with property value directory result)
    set(found "")
    get_property(targets DIRECTORY ${directory} PROPERTY BUILDSYSTEM_TARGETS)
    foreach(target IN LISTS targets)
        get_target_property(type ${target} TYPE)
        get_target_property(values ${target} ${property})
        if(type STREQUAL "EXECUTABLE" AND "${value}" IN_LIST values)
            list(APPEND found ${target})
        endif()
    endforeach()
    get_property(directories DIRECTORY ${directory} PROPERTY SUBDIRECTORIES)
    foreach(subdirectory IN LISTS directories)
        nimba_executables_with(${property} "${value}" ${subdirectory} more)
        list(APPEND found ${more})
    endforeach()
    set(${result} ${found} PARENT_SCOPE)
endfunction()

function(nimba_add_coverage)
    set(directory ${CMAKE_BINARY_DIR}/coverage)
    get_target_property(sources nimba_objects SOURCES)
    get_target_property(include_directories nimba_objects INCLUDE_DIRECTORIES)
    add_library(coverage_objects OBJECT EXCLUDE_FROM_ALL ${sources})
    target_include_directories(coverage_objects PRIVATE ${include_directories})
    # The lint looks at each source once.
    set_target_properties(coverage_objects PROPERTIES EXPORT_COMPILE_COMMANDS OFF)
    # The checked calls need optimisation.
    target_compile_options(coverage_objects PRIVATE
        "SHELL:-U _FORTIFY_SOURCE" -O0 -g --coverage)
    target_link_options(coverage_objects INTERFACE --coverage)
    target_link_libraries(coverage_objects PUBLIC ${CMAKE_DL_LIBS})

    add_library(coverage_library SHARED EXCLUDE_FROM_ALL)
    target_link_libraries(coverage_library PRIVATE coverage_objects)
    get_target_property(options nimba_mgmt_interface LINK_OPTIONS)
    target_link_options(coverage_library PRIVATE ${options})
    set_target_properties(coverage_library PROPERTIES
        OUTPUT_NAME nimba_mgmt_interface
        SOVERSION ${PROJECT_VERSION_MAJOR}
        LIBRARY_OUTPUT_DIRECTORY ${directory})

    find_package(GTest REQUIRED)
    find_package(Threads REQUIRED)
    add_custom_target(coverage)
    add_dependencies(coverage coverage_library)
    nimba_executables_with(LINK_LIBRARIES nimba_objects ${CMAKE_SOURCE_DIR}/tests tests)
    set(programs "")
    foreach(test IN LISTS tests)
        get_target_property(libraries ${test} LINK_LIBRARIES)
        list(TRANSFORM libraries REPLACE "^nimba_objects$" coverage_objects)
        get_target_property(options ${test} LINK_OPTIONS)
        add_executable(coverage_${test} EXCLUDE_FROM_ALL $<TARGET_OBJECTS:${test}>)
        target_link_libraries(coverage_${test} PRIVATE ${libraries})
        if(options)
            target_link_options(coverage_${test} PRIVATE ${options})
        endif()
        set_target_properties(coverage_${test} PROPERTIES
            LINKER_LANGUAGE CXX
            OUTPUT_NAME ${test}
            RUNTIME_OUTPUT_DIRECTORY ${directory}/tests)
        add_dependencies(coverage coverage_${test})
        string(APPEND programs "$<TARGET_FILE:coverage_${test}>\n")
    endforeach()
    # The others load the library; system_test needs a simulated machine.
    nimba_executables_with(COMPILE_DEFINITIONS
                           "NIMBA_LIBRARY=\"$<TARGET_FILE:nimba_mgmt_interface>\""
                           ${CMAKE_SOURCE_DIR}/tests tests)
    list(REMOVE_ITEM tests system_test)
    foreach(test IN LISTS tests)
        add_dependencies(coverage ${test})
        string(APPEND programs "$<TARGET_FILE:${test}>\n")
    endforeach()
    add_dependencies(coverage system_test)
    file(GENERATE OUTPUT ${directory}/programs CONTENT "${programs}")
    file(GENERATE OUTPUT ${directory}/shipped CONTENT "$<TARGET_FILE:nimba_mgmt_interface>\n")
endfunction()
