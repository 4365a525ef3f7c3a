// SPDX-License-Identifier: MIT
#include "tools/smi/capture/node_table.hpp"

#include <array>

namespace nimba::smi {
namespace {

using enum NodeBase;

constexpr std::size_t kNumber = 4096;  // as much as is scanned for numbers
constexpr std::size_t kSettings = 512;

constexpr std::array kRows{
    NodeRow{kDebug, "info", 128},
    NodeRow{kDebug, "devices/*/info", kWholeNode, NodeDriver::kVa},
    NodeRow{kDebug, "devices/*/=", kWholeNode, NodeDriver::kLegacy},
    NodeRow{kMinor0, "devices/*/info", kWholeNode},
    NodeRow{kProcess, "cmdline", 511},
    NodeRow{kProcess, "comm", 64},

    NodeRow{kDevice, "current_link_width", 64},
    NodeRow{kDevice, "drm/card#", 0},
    NodeRow{kProc, "gpuinfo_#", 1024},

    NodeRow{kHwmon, "temp1_input", kNumber},
    NodeRow{kHwmon, "fan0_input", kNumber},
    NodeRow{kHwmon, "fan1_input", kNumber},

    NodeRow{kInfo, "engine_3d_usage", kNumber},
    NodeRow{kInfo, "engine_vcp_usage", kNumber},
    NodeRow{kInfo, "engine_vcp_info", kNumber},
    NodeRow{kInfo, "engine_vpp_usage", kNumber},
    NodeRow{kInfo, "fan_speed", kNumber},
    NodeRow{kInfo, "vbios_version", kNumber},
    NodeRow{kInfo, "pmp_version", kNumber},
    NodeRow{kInfo, "release_date", kNumber},
    NodeRow{kInfo, "driver_version", kNumber},
    NodeRow{kInfo, "miu_channel_num", kNumber},
    NodeRow{kInfo, "slice_mask", kNumber},
    NodeRow{kInfo, "fb_size", kNumber},
    NodeRow{kInfo, "free_fb_mem", kNumber},
    NodeRow{kInfo, "eclk", kNumber},
    NodeRow{kInfo, "vclk", kNumber},
    NodeRow{kInfo, "mclk", kNumber},
    NodeRow{kInfo, "coreclk", kNumber},
    NodeRow{kInfo, "enable_perf", kNumber},
    NodeRow{kInfo, "enable_usage", kNumber},
    NodeRow{kInfo, "fps_count", kNumber},
    NodeRow{kInfo, "rxa_blt_scn_cnt", kNumber},
    NodeRow{kInfo, "misc_ctl_flag", kNumber},
    NodeRow{kInfo, "power_mode", kNumber},
    NodeRow{kInfo, "power_case", kNumber},
    NodeRow{kInfo, "pwm_wait_count", kNumber},
    NodeRow{kInfo, "dvfs_mode", kNumber},
    NodeRow{kInfo, "dvfs_control_params", kNumber},
    NodeRow{kInfo, "dvfs_clk_voltage", kNumber},
    NodeRow{kInfo, "dvfs_level", kNumber},
    NodeRow{kInfo, "segment_info", kNumber},

    NodeRow{kDebug, "heaps/heap_invalid/info", kSettings},
    NodeRow{kDebug, "heaps/heap_local/info", kSettings},
    NodeRow{kDebug, "heaps/heap_pcie_unsnoop/info", kSettings},
    NodeRow{kDebug, "heaps/heap_pcie_snoop/info", kSettings},
    NodeRow{kMinor0, "allocations/*/vm_info", kWholeNode},
    NodeRow{kDebug, "allocations/*/info", kWholeNode},
    NodeRow{kMinor0, "devices/*/vm_info", kWholeNode},
};

}  // namespace

std::span<const NodeRow> node_table()
{
    return kRows;
}

}  // namespace nimba::smi
