# SPDX-License-Identifier: MIT
# Sensors and single values, and the power and DVFS settings.
nimba_power_test(power_node_values_test
    node_journal.cpp node_values_control_flag_test.cpp node_values_temperature_test.cpp
    node_values_test.cpp)

nimba_loaded_library_test(power_dvfs_test
    dvfs_before_adapter_test.cpp dvfs_cache_test.cpp dvfs_clocks_test.cpp dvfs_flag_test.cpp
    dvfs_level_test.cpp dvfs_node_failure_test.cpp dvfs_read_fields_test.cpp
    dvfs_read_leftovers_test.cpp dvfs_read_text_test.cpp dvfs_write_test.cpp node_journal.cpp)
