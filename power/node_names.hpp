// SPDX-License-Identifier: MIT
// The names of the nodes that are read by number.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace nimba {

// One table seen through two bases: callers may reach names of the one through the other.
inline constexpr std::array kNodeNames{
    // the hwmon directory
    "temp1_input",
    "fan0_input",
    "fan1_input",
    "none",
    // the info directory
    "engine_3d_usage",
    "engine_vcp_usage",
    "engine_vcp_info",
    "engine_vpp_usage",
    "fan_speed",
    "vbios_version",
    "pmp_version",
    "release_date",
    "driver_version",
    "miu_channel_num",
    "slice_mask",
    "fb_size",
    "free_fb_mem",
    "eclk",
    "vclk",
    "mclk",
    "enable_perf",
    "enable_usage",
    "fps_count",
    "rxa_blt_scn_cnt",
    "misc_ctl_flag",
    "power_mode",
    "power_case",
    "pwm_wait_count",
    "dvfs_mode",
    "dvfs_control_params",
    "dvfs_clk_voltage",
    "dvfs_level",
    "segment_info",
    "coreclk",
    "none",
};

inline constexpr int64_t kHwmonNodes = 0;
inline constexpr int64_t kInfoNodes = 4;

// The name `index` places behind the base, or null outside the table.
constexpr const char* node_name(int64_t base, int32_t index)
{
    const int64_t place = base + index;
    return place >= 0 && place < static_cast<int64_t>(kNodeNames.size())
               ? kNodeNames[static_cast<std::size_t>(place)]
               : nullptr;
}

}  // namespace nimba
