// SPDX-License-Identifier: MIT
#include "tools/smi/worker/summary_requests.hpp"

#include "nimba_mgmt_interface.h"
#include "tools/smi/summary/reading.hpp"
#include "tools/smi/worker/driver_files.hpp"
#include "tools/smi/worker/entered_adapter.hpp"
#include "tools/smi/worker/monitor_library.hpp"
#include "tools/smi/worker/node_reader.hpp"
#include "tools/smi/worker/own_adapter.hpp"
#include "tools/smi/worker/symbols.hpp"

#include <nlohmann/json.hpp>

#include <chrono>
#include <limits>
#include <utility>
#include <variant>

namespace nimba::smi {
namespace {

// The library does not write it, or does not know it.
constexpr uint32_t kNotTold = std::numeric_limits<uint32_t>::max();

// dmidecode is run three times.
constexpr std::chrono::milliseconds kCommandTime{5000};

struct SummaryEntryPoints {
    decltype(&::get_adapter_summary) summary = nullptr;
    decltype(&::get_adapter_summary_ext2) summary_ext2 = nullptr;
};

using Entry = SummaryEntryPoints;

constexpr Symbol<Entry> kSymbols[] = {
    {"get_adapter_summary", store<&Entry::summary>},
    {"get_adapter_summary_ext2", store<&Entry::summary_ext2>},
};

struct NodeRow {
    int32_t index;
    const char* name;
    std::optional<int64_t> SummaryReading::*member;
};

// What no other command shows.
constexpr NodeRow kNodes[] = {
    {INFO_NODE_ENGINE_VCP_INFO, "engine_vcp_info", &SummaryReading::video_decoder_info},
    {INFO_NODE_VBIOS_VERSION, "vbios_version", &SummaryReading::vbios_version_number},
    {INFO_NODE_PMP_VERSION, "pmp_version", &SummaryReading::pmp_version_number},
    {INFO_NODE_RELEASE_DATE, "release_date", &SummaryReading::release_date_number},
    {INFO_NODE_DRIVER_VERSION, "driver_version", &SummaryReading::driver_version_number},
    {INFO_NODE_SLICE_MASK, "slice_mask", &SummaryReading::slice_mask},
    {INFO_NODE_FREE_FB_MEM, "free_fb_mem", &SummaryReading::frame_buffer_free},
    {INFO_NODE_ENABLE_PERF, "enable_perf", &SummaryReading::enable_perf},
    {INFO_NODE_ENABLE_USAGE, "enable_usage", &SummaryReading::enable_usage},
    {INFO_NODE_POWER_CASE, "power_case", &SummaryReading::power_case},
    {INFO_NODE_FPS_COUNT, "fps_count", &SummaryReading::flip_count},
    {INFO_NODE_RXA_BLT_SCN_CNT, "rxa_blt_scn_cnt", &SummaryReading::blit_count},
};

template <typename Number>
std::optional<Number> unless_zero(Number number)
{
    return number == 0 ? std::nullopt : std::optional(number);
}

std::optional<uint32_t> if_told(uint32_t number)
{
    return number == kNotTold ? std::nullopt : std::optional(number);
}

void take_summary(const adapter_summary& summary, SummaryReading& reading)
{
    reading.frame_buffer_size = unless_zero(summary.fb_size);
    reading.memory_data_rate = unless_zero(summary.memory_data_rate);
    reading.display_ports = unless_zero(summary.display_port_num);
    reading.display_types = unless_zero(summary.display_type_mask);
    reading.memory_channels = unless_zero(summary.miu_channel_num);
    reading.link_width = unless_zero(summary.pcie_link_width);
    if (summary.memory_type != kNotTold) {
        reading.memory_type = unless_zero(summary.memory_type);
        reading.memory_bit_width = unless_zero(summary.memory_bit_width);
    }
}

void take_summary(const adapter_summary_ext2& summary, SummaryReading& reading)
{
    reading.driver_version = unless_zero(summary.driver_version);
    reading.firmware_version = unless_zero(summary.firmware_version);
    if (summary.firmware_name[0] != '\0') {
        reading.firmware_name = summary.firmware_name;
    }
    reading.pixel_fillrate = unless_zero(summary.pixel_fillrate);
    reading.texture_fillrate = unless_zero(summary.texture_fillrate);
    reading.memory_clock_freq = unless_zero(summary.memory_clock_freq);
    reading.max_resolution_hdmi_dp = unless_zero(summary.max_resolution_hdmi_dp);
    reading.max_resolution_vga = unless_zero(summary.max_resolution_vga);
    reading.memory_usage = if_told(summary.gpu_memory_usage);
    reading.use_rate_3d = if_told(summary.gpu_use_rate_3d);
    reading.use_rate_video = if_told(summary.gpu_use_rate_video);
    reading.use_rate_vpp = if_told(summary.gpu_use_rate_vpp);
    reading.temperature = if_told(summary.realtime_temperature);
    reading.link_generation = unless_zero(summary.pcie_gen);
}

void read_nodes(Session& session, const MonitorEntryPoints& entry, const Adapter& adapter,
                SummaryReading& reading)
{
    NodeReader nodes{session, entry, adapter, "figures", reading};
    for (const NodeRow& row : kNodes) {
        reading.*row.member = nodes.info(row.index, row.name);
    }
}

// The adapter with what discovery alone does not tell.
Adapter described(Session& session, Adapter adapter)
{
    if (adapter.driver == DriverKind::kUnknown && has_primary_node(adapter)) {
        const std::string info = driver_info_path(*adapter.card, adapter.vendor_id);
        adapter.driver =
            driver_kind_without_va(session.call("open " + info, [&] { return read_access(info); }));
    }
    return adapter;
}

}  // namespace

Message answer_summary(Session& session)
{
    SummaryEntryPoints entry;
    const Library& library = session.library();
    if (auto fault = find_symbols<Entry>(library.handle.get(), library.path, kSymbols, entry)) {
        return Failure{ExitStatus::kNoLibrary, "dlsym", *std::move(fault)};
    }
    auto found = find_monitor_entry_points(library);
    if (auto* const fault = std::get_if<std::string>(&found)) {
        return Failure{ExitStatus::kNoLibrary, "dlsym", std::move(*fault)};
    }
    SummaryReading reading;
    if (const auto own = enter_own_adapter(session)) {
        reading.bus_id = own->adapter.bus_id;
        reading.adapter = described(session, own->adapter);
        find_adapter record = session.adapters();
        adapter_summary summary{};
        summary.memory_type = kNotTold;
        session.call(
            "get_adapter_summary", [&] { entry.summary(&summary, &record); }, kCommandTime);
        take_summary(summary, reading);
        adapter_summary_ext2 summary_ext2{};
        session.call("get_adapter_summary_ext2",
                     [&] { entry.summary_ext2(&summary_ext2, &record); });
        take_summary(summary_ext2, reading);
        read_nodes(session, std::get<MonitorEntryPoints>(found), own->adapter, reading);
    }
    return Answer{to_json_value(reading)};
}

}  // namespace nimba::smi
