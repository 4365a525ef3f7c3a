// SPDX-License-Identifier: MIT
#include "tools/smi/summary/reading.hpp"

#include "tools/smi/worker/adapter_json.hpp"
#include "tools/smi/worker/payload_json.hpp"

namespace nimba::smi {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(
    SummaryReading, bus_id, remarks, stale, adapter, frame_buffer_size, memory_data_rate,
    display_ports, display_types, memory_channels, link_width, memory_type, memory_bit_width,
    driver_version, firmware_version, firmware_name, pixel_fillrate, texture_fillrate,
    memory_clock_freq, max_resolution_hdmi_dp, max_resolution_vga, memory_usage, use_rate_3d,
    use_rate_video, use_rate_vpp, temperature, link_generation, video_decoder_info,
    vbios_version_number, pmp_version_number, release_date_number, driver_version_number,
    slice_mask, frame_buffer_free, enable_perf, enable_usage, power_case, flip_count, blit_count)

NIMBA_SMI_PAYLOAD(SummaryReading)

}  // namespace nimba::smi
