# SPDX-License-Identifier: MIT
# The texts of the driver's nodes: virtual-memory nodes of allocations, processes, dumps.
nimba_pagetable_test(vm_node_text_test vm_node_text_test.cpp)
nimba_pagetable_test(vm_node_reader_test
    driver_root.cpp vm_node_descriptor_test.cpp vm_node_keys_test.cpp
    vm_node_reader_broken_test.cpp vm_node_reader_retry_test.cpp vm_node_reader_test.cpp
    ${CMAKE_SOURCE_DIR}/tests/alloc/directory_listing.cpp
    ${CMAKE_SOURCE_DIR}/tests/alloc/recorded_pauses.cpp)
nimba_pagetable_test(dump_line_test
    dump_line_test.cpp dump_line_numbers_test.cpp entry_printers_test.cpp)
nimba_pagetable_test(process_node_test
    process_node_broken_test.cpp process_node_rest_test.cpp process_node_test.cpp)
nimba_pagetable_test(process_command_test
    process_command_pipe_test.cpp process_command_quoting_test.cpp
    process_command_signal_test.cpp process_command_test.cpp)
nimba_pagetable_test(page_table_dump_test
    page_table_dump_blanks_test.cpp page_table_dump_broken_test.cpp
    page_table_dump_growth_test.cpp page_table_dump_lines_test.cpp
    page_table_dump_links_test.cpp page_table_dump_sub_tables_test.cpp page_table_dump_test.cpp
    page_table_dump_usual_lines_test.cpp)
