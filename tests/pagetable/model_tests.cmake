# SPDX-License-Identifier: MIT
# The records that page tables are read into, their collection, and what a host gets of them.
nimba_pagetable_test(pagetable_model_test
    model_digital_index_test.cpp model_layout_test.cpp model_lookup_test.cpp
    model_vectors_test.cpp)

set(collector_sources
    collector_driver.cpp driver_root.cpp ${CMAKE_SOURCE_DIR}/tests/alloc/recorded_pauses.cpp)
nimba_pagetable_test(pagetable_collector_test
    collector_capacity_test.cpp collector_failure_test.cpp collector_pass_test.cpp
    collector_retry_test.cpp ${collector_sources})
nimba_pagetable_test(pagetable_export_test
    export_allocations_test.cpp export_page_tables_test.cpp export_positive_status_test.cpp
    export_status_test.cpp
    ${collector_sources})

# A host that uses the library in an exit handler, behind the library's static destructors.
add_executable(export_exit_handler_host export_exit_handler_host.cpp driver_root.cpp)
set_target_properties(export_exit_handler_host PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
target_include_directories(export_exit_handler_host PRIVATE
    ${CMAKE_SOURCE_DIR}/tests ${NIMBA_HEADER_DIR})
target_link_libraries(export_exit_handler_host PRIVATE ${CMAKE_DL_LIBS})
add_dependencies(export_exit_handler_host nimba_mgmt_interface)
add_test(NAME PageTablesAreReadInAnExitHandlerBehindTheLibrarysStaticDestructors
    COMMAND ${CMAKE_SOURCE_DIR}/tests/support/expect-output
            ${CMAKE_CURRENT_SOURCE_DIR}/export_exit_handler_host.expected
            ${CMAKE_SOURCE_DIR}/tests/support/with-directory
            $<TARGET_FILE:export_exit_handler_host> $<TARGET_FILE:nimba_mgmt_interface>)
