// SPDX-License-Identifier: MIT
// What the texts of the driver have of their own. A program may be called the same, and the library
// is to find it all the same.
#pragma once

#include <array>
#include <string_view>

namespace nimba::smi {

// What the library looks for, with "=" or ":" behind it.
inline constexpr std::array<std::string_view, 79> kDriverKeys{
    "VA",
    "handle",
    "device",
    "width",
    "height",
    "pitch",
    "bit_cnt",
    "secured",
    "size",
    "tile",
    "cpu_visible",
    "cache_type",
    "pool_type",
    "at_type",
    "segmentid",
    "hw_format",
    "compress_format",
    "bl_slot_index",
    "gpu_virt_addr",
    "imported",
    "fb_offset",
    "share",
    "pid",
    "vm node info",
    "device_pid",
    "device_pname",
    "gpu_va",
    "entry addr",
    "buffer",
    "Snoop",
    "Segment",
    "LargePage",
    "Addr",
    "power_mode",
    "pg_3d",
    "pg_vcp",
    "pg_vpp",
    "cg_3d",
    "cg_vcp",
    "cg_vpp",
    "dvfs_mode",
    "gfx_dvfs_checksize",
    "gfx_dvfs_h_threshold",
    "gfx_dvfs_l_threshold",
    "vcp0_dvfs_checksize",
    "vcp0_dvfs_h_threshold",
    "vcp0_dvfs_l_threshold",
    "vcp1_dvfs_checksize",
    "vcp1_dvfs_h_threshold",
    "vcp1_dvfs_l_threshold",
    "vpp_dvfs_checksize",
    "vpp_dvfs_h_threshold",
    "vpp_dvfs_l_threshold",
    "gfx_clock",
    "gfx_voltage",
    "dvfs_level",
    "segment_id",
    "total_size",
    "used_size",
    "Total segment size",
    "KMD used segment memory",
    "Device ID",
    "Driver Version",
    "Firmware Version",
    "Firmware Name",
    "Bus Type",
    "Max Display Port",
    "Support Display Type",
    "Pixel Fillrate",
    "Texture Fillrate",
    "Memory Clock Freq",
    "HDMI Max Display Resolution",
    "DP Max Display Resolution",
    "VGA Max Display Resolution",
    "GPU Memory Usage",
    "GPU Use Rate(3d)",
    "GPU Use Rate(video)",
    "GPU Use Rate(vpp)",
    "Realtime Temperature",
};

// What stands behind them.
inline constexpr std::array<std::string_view, 14> kDriverWords{
    "balance", "lowpower", "performance", "VGA",  "DVI",    "HDMI", "DP",
    "EDP",     "PCIE",     "entry",       "info", "buffer", "addr", "unknown"};

}  // namespace nimba::smi
