// SPDX-License-Identifier: MIT
// What a worker reads of both summaries of an adapter, and how it travels to the tool. The
// summaries have 0 for what cannot be read, which is no value here, but for use and temperature.
#pragma once

#include "tools/smi/adapter.hpp"
#include "tools/smi/worker/adapter_reading.hpp"
#include "tools/smi/worker/payload_value.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace nimba::smi {

// Answer to "summary". The clocks of the first summary are those of ClockReading.
struct SummaryReading : AdapterReading {
    std::optional<Adapter> adapter;

    std::optional<uint32_t> frame_buffer_size;  // in the driver's unit
    std::optional<uint32_t> memory_data_rate;   // twice the memory clock, or MT/s
    std::optional<uint32_t> display_ports;      // none when no output is told
    std::optional<uint32_t> display_types;      // bits of support_CONNECT_type_list
    std::optional<uint32_t> memory_channels;
    std::optional<uint32_t> link_width;        // lanes
    std::optional<uint32_t> memory_type;       // DDR generation; not told for Nimba chips
    std::optional<uint32_t> memory_bit_width;  // not told for Nimba chips

    std::optional<uint64_t> driver_version;    // packed as in adapter_summary_ext2
    std::optional<uint64_t> firmware_version;  // packed
    std::optional<std::string> firmware_name;
    std::optional<uint32_t> pixel_fillrate;  // in the driver's units, as what follows
    std::optional<uint32_t> texture_fillrate;
    std::optional<uint32_t> memory_clock_freq;
    std::optional<uint64_t> max_resolution_hdmi_dp;  // packed
    std::optional<uint64_t> max_resolution_vga;      // packed
    std::optional<uint32_t> memory_usage;
    std::optional<uint32_t> use_rate_3d;
    std::optional<uint32_t> use_rate_video;
    std::optional<uint32_t> use_rate_vpp;
    std::optional<uint32_t> temperature;
    std::optional<uint32_t> link_generation;  // of PCIe

    // The number that begins a node of the info directory, in the driver's units.
    std::optional<int64_t> video_decoder_info;     // "engine_vcp_info"
    std::optional<int64_t> vbios_version_number;   // "vbios_version"
    std::optional<int64_t> pmp_version_number;     // "pmp_version"
    std::optional<int64_t> release_date_number;    // "release_date"
    std::optional<int64_t> driver_version_number;  // "driver_version"
    std::optional<int64_t> slice_mask;
    std::optional<int64_t> frame_buffer_free;  // "free_fb_mem"
    std::optional<int64_t> enable_perf;
    std::optional<int64_t> enable_usage;
    std::optional<int64_t> power_case;
    std::optional<int64_t> flip_count;  // "fps_count"
    std::optional<int64_t> blit_count;  // "rxa_blt_scn_cnt"

    bool operator==(const SummaryReading&) const = default;
};

}  // namespace nimba::smi
