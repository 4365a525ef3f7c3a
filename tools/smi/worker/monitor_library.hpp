// SPDX-License-Identifier: MIT
// The part of the management library that the commands about segments, clocks, sensors and counters
// need: it is looked up when it is needed, so that the other commands also work with a library that
// lacks it.
#pragma once

#include "nimba_mgmt_interface.h"
#include "tools/smi/worker/library.hpp"

#include <string>
#include <variant>

namespace nimba::smi {

struct MonitorEntryPoints {
    decltype(&::gpuinfo_set_enable_usage) set_enable_usage = nullptr;
    decltype(&::gpuinfo_get_jwinfoFD_value_int) info_value = nullptr;
    decltype(&::gpuinfo_get_hwmonFD_value_int) hwmon_value = nullptr;
    decltype(&::gpuinfo_get_temparature_value_int) temperature = nullptr;
    decltype(&::gpuinfo_get_data_from_dvfs_register) dvfs_state = nullptr;
    decltype(&::segment_init) segment_init = nullptr;
    decltype(&::get_segment_info) segment_info = nullptr;
    decltype(&::gpuinfo_get_segment_info) segment_node = nullptr;
    decltype(&::fps_init) fps_init = nullptr;
    decltype(&::gpuinfo_get_fps_count) fps_count = nullptr;
    decltype(&::get_fps_info) fps_info = nullptr;
    decltype(&::bandwidth_init) bandwidth_init = nullptr;
    decltype(&::get_bandwidth_info) bandwidth_info = nullptr;
    decltype(&::gfxbusy_init) busy_init = nullptr;
    decltype(&::get_gpubusy_info) busy_info = nullptr;
};

// Looks the entry points up. Returns them, or what is wrong with the library.
std::variant<MonitorEntryPoints, std::string> find_monitor_entry_points(const Library& library);

}  // namespace nimba::smi
