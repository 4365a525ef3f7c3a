# SPDX-License-Identifier: MIT
# nimba_loaded_library_test(NAME SOURCE...): a unit test of the shared library, which it loads at
# run time (tests/support/loaded_library.hpp).
function(nimba_loaded_library_test name)
    nimba_unit_test(${name} ${ARGN})
    target_include_directories(${name} PRIVATE ${NIMBA_HEADER_DIR})
    target_compile_definitions(${name} PRIVATE
        NIMBA_LIBRARY="$<TARGET_FILE:nimba_mgmt_interface>")
    target_link_libraries(${name} PRIVATE ${CMAKE_DL_LIBS})
    add_dependencies(${name} nimba_mgmt_interface)
endfunction()
