# SPDX-License-Identifier: MIT
# libnimba_mgmt_interface: its rooms are compiled once, into objects that the shared library and the
# unit tests share.
find_package(PkgConfig REQUIRED)
pkg_check_modules(LIBDRM REQUIRED IMPORTED_TARGET libdrm) # for its types; it is loaded at run time

add_library(nimba_objects OBJECT
    alloc/allocation_reader.cpp
    alloc/allocation_text.cpp
    alloc/device_map.cpp
    alloc/device_summary.cpp
    alloc/key_value.cpp
    alloc/leak_detector.cpp
    alloc/leak_merge.cpp
    alloc/leak_report.cpp
    alloc/process_name.cpp
    alloc/raw_list.cpp
    alloc/segment_usage.cpp
    config/preference_file.cpp
    config/preferences.cpp
    config/preference_text.cpp
    core/adapter_summary.cpp
    core/adapter_summary_ext2.cpp
    core/adapter_sysfs.cpp
    core/chip_table.cpp
    core/current_adapter.cpp
    core/debug_directory.cpp
    core/discovery.cpp
    core/display_outputs.cpp
    core/drm_library.cpp
    core/entries.cpp
    core/fatal.cpp
    core/gpuinfo_text.cpp
    core/interface_version.cpp
    core/kernel_interface.cpp
    core/lifecycle.cpp
    core/logging.cpp
    core/node_access.cpp
    core/node_pieces.cpp
    core/node_text.cpp
    core/shared_library.cpp
    core/whole_node.cpp
    pagetable/collector.cpp
    pagetable/device_arrays.cpp
    pagetable/device_nodes.cpp
    pagetable/dump_line.cpp
    pagetable/export.cpp
    pagetable/lookup.cpp
    pagetable/model.cpp
    pagetable/printers.cpp
    pagetable/process_command.cpp
    pagetable/tree_builder.cpp
    pagetable/vm_allocations.cpp
    pagetable/vm_node_text.cpp
    power/bandwidth.cpp
    power/dvfs_registers.cpp
    power/engine_busy.cpp
    power/frame_rate.cpp
    power/memory_modules.cpp
    power/node_values.cpp
    power/segment_heaps.cpp
    power/segment_node.cpp
    power/segments.cpp
    power/system_memory.cpp)
target_include_directories(nimba_objects
    PUBLIC ${NIMBA_HEADER_DIR} ${CMAKE_SOURCE_DIR}
    PRIVATE ${LIBDRM_INCLUDE_DIRS})
target_link_libraries(nimba_objects PUBLIC ${CMAKE_DL_LIBS})

set(exports ${CMAKE_SOURCE_DIR}/core/exports.map)
add_library(nimba_mgmt_interface SHARED)
add_library(nimba::mgmt_interface ALIAS nimba_mgmt_interface)
target_link_libraries(nimba_mgmt_interface PRIVATE nimba_objects)
# Calls between the library's own functions stay inside it, whatever a host names its functions.
target_link_options(nimba_mgmt_interface PRIVATE
    -Wl,--version-script=${exports} -Wl,-Bsymbolic-functions)
target_include_directories(nimba_mgmt_interface
    INTERFACE $<BUILD_INTERFACE:${NIMBA_HEADER_DIR}>
              $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
set_target_properties(nimba_mgmt_interface PROPERTIES
    EXPORT_NAME mgmt_interface
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    LINK_DEPENDS ${exports})
