// SPDX-License-Identifier: MIT
#include "tools/smi/worker/monitor_library.hpp"

#include "tools/smi/worker/symbols.hpp"

namespace nimba::smi {
namespace {

using Entry = MonitorEntryPoints;

constexpr Symbol<Entry> kSymbols[] = {
    {"gpuinfo_set_enable_usage", store<&Entry::set_enable_usage>},
    {"gpuinfo_get_jwinfoFD_value_int", store<&Entry::info_value>},
    {"gpuinfo_get_hwmonFD_value_int", store<&Entry::hwmon_value>},
    {"gpuinfo_get_temparature_value_int", store<&Entry::temperature>},
    {"gpuinfo_get_data_from_dvfs_register", store<&Entry::dvfs_state>},
    {"segment_init", store<&Entry::segment_init>},
    {"get_segment_info", store<&Entry::segment_info>},
    {"gpuinfo_get_segment_info", store<&Entry::segment_node>},
    {"fps_init", store<&Entry::fps_init>},
    {"gpuinfo_get_fps_count", store<&Entry::fps_count>},
    {"get_fps_info", store<&Entry::fps_info>},
    {"bandwidth_init", store<&Entry::bandwidth_init>},
    {"get_bandwidth_info", store<&Entry::bandwidth_info>},
    {"gfxbusy_init", store<&Entry::busy_init>},
    {"get_gpubusy_info", store<&Entry::busy_info>},
};

}  // namespace

std::variant<MonitorEntryPoints, std::string> find_monitor_entry_points(const Library& library)
{
    MonitorEntryPoints entry;
    if (auto fault = find_symbols<Entry>(library.handle.get(), library.path, kSymbols, entry)) {
        return *std::move(fault);
    }
    return entry;
}

}  // namespace nimba::smi
