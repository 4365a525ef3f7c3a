# SPDX-License-Identifier: MIT
# Segments, the system's memory, frame rates, hardware information and engine use.
nimba_power_test(power_segment_test
    segment_heaps_test.cpp segment_node_test.cpp segment_source_test.cpp
    ${CMAKE_SOURCE_DIR}/tests/alloc/recorded_pauses.cpp)
nimba_power_test(power_system_memory_test
    system_memory_command_test.cpp system_memory_type_test.cpp system_memory_width_test.cpp)
nimba_power_test(power_frame_rate_node_test frame_rate_node_test.cpp)

# nimba_counters_stub(NAME FUNCTION...): a kernel-interface library with these functions.
function(nimba_counters_stub name)
    list(TRANSFORM ARGN TOUPPER OUTPUT_VARIABLE functions)
    list(TRANSFORM functions PREPEND WITH_)
    add_library(${name} MODULE stub/kernel_counters_stub.c)
    target_compile_definitions(${name} PRIVATE ${functions})
    set_target_properties(${name} PROPERTIES
        PREFIX "" LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests/stub)
    set_property(DIRECTORY APPEND PROPERTY nimba_counters_stubs ${name})
endfunction()

nimba_counters_stub(flips_gfx_size gfx_get_struct_size gfx_flip_count)
nimba_counters_stub(flips_qv_size qv_get_struct_size gfx_flip_count)
nimba_counters_stub(flips_both_sizes gfx_get_struct_size qv_get_struct_size gfx_flip_count)

# Their names tell what they have: see bandwidth_choice_test.cpp and engine_busy_test.cpp.
foreach(letters IDEG_idg IDG_idg IDE_idg IDEG_ IDG_ IDE_ DEG_idg DG_idg IEG_idg IG_idg ID_idg E_idg
        E_id _idg _ ID_ ID_id _id _ig _dg E_i IG_id DG_dg DG_ig DEG_ig IEG_dg IEG_ig)
    set(functions gfx_get_struct_size)
    foreach(pair I:gfx_init_hwinfo D:gfx_deinit_hwinfo E:gfx_get_hwinfo_ext G:gfx_get_hwinfo
            i:qv_init_hwinfo d:qv_deinit_hwinfo g:qv_get_hwinfo)
        string(SUBSTRING ${pair} 0 1 letter)
        string(SUBSTRING ${pair} 2 -1 function)
        if(letters MATCHES ${letter})
            list(APPEND functions ${function})
        endif()
    endforeach()
    nimba_counters_stub(hwinfo_${letters} ${functions})
endforeach()
nimba_counters_stub(busy_ gfx_get_struct_size)
nimba_counters_stub(busy_U gfx_get_struct_size gfx_get_usage_info)
nimba_counters_stub(busy_Q gfx_get_struct_size qvGetHwqInfo)
nimba_counters_stub(busy_X gfx_get_struct_size gfx_get_usage_info_ext)
nimba_counters_stub(busy_UQ gfx_get_struct_size gfx_get_usage_info qvGetHwqInfo)
nimba_counters_stub(busy_UX gfx_get_struct_size gfx_get_usage_info gfx_get_usage_info_ext)
nimba_counters_stub(busy_QX gfx_get_struct_size qvGetHwqInfo gfx_get_usage_info_ext)
nimba_counters_stub(busy_UQX
    gfx_get_struct_size gfx_get_usage_info qvGetHwqInfo gfx_get_usage_info_ext)

nimba_loaded_library_test(power_kernel_counters_test
    bandwidth_choice_test.cpp
    bandwidth_test.cpp
    engine_busy_test.cpp
    frame_rate_library_test.cpp
    kernel_counters_fixture.cpp
    ${CMAKE_SOURCE_DIR}/tests/system/lifecycle_fixture.cpp
    ${CMAKE_SOURCE_DIR}/tests/system/search_directory.cpp)
target_compile_definitions(power_kernel_counters_test PRIVATE
    NIMBA_STUB_DIRECTORY="${CMAKE_BINARY_DIR}/tests/stub")
target_link_libraries(power_kernel_counters_test PRIVATE GTest::gtest)
# The stubs call the program back.
target_link_options(power_kernel_counters_test PRIVATE
    -Wl,--export-dynamic-symbol=kernel_counters_called)
get_property(stubs DIRECTORY PROPERTY nimba_counters_stubs)
add_dependencies(power_kernel_counters_test ${stubs})
