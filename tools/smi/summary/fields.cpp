// SPDX-License-Identifier: MIT
#include "tools/smi/summary/fields.hpp"

#include "nimba_mgmt_interface.h"
#include "tools/smi/text/json.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <array>
#include <string_view>
#include <type_traits>

namespace nimba::smi {
namespace {

constexpr const char* kDrivers = "driver's";

// Which chips have a field with this source.
enum class Chips : uint8_t { kAll, kNimba, kOthers };

// In a source, "{i}" stands for the info directory and "{c}" for the number of the card.
struct FieldRow {
    const char* key;
    const char* unit;
    const char* source;
    FieldValue (*value)(const AdapterState& adapter);
    Chips chips = Chips::kAll;
    bool is_clock = false;
};

template <typename Number>
FieldValue number_value(const std::optional<Number>& number)
{
    return number ? FieldValue{static_cast<int64_t>(*number)} : std::nullopt;
}

template <auto Member>
FieldValue of_summary(const AdapterState& adapter)
{
    const auto& value = adapter.summary.*Member;
    if constexpr (std::is_same_v<decltype(value), const std::optional<std::string>&>) {
        return value ? FieldValue{*value} : std::nullopt;
    } else {
        return number_value(value);
    }
}

template <auto Member>
FieldValue of_clocks(const AdapterState& adapter)
{
    return number_value(adapter.clocks.*Member);
}

template <auto Member, std::string (*Text)(uint64_t packed)>
FieldValue version(const AdapterState& adapter)
{
    const std::optional<uint64_t>& packed = adapter.summary.*Member;
    return packed ? FieldValue{Text(*packed)} : std::nullopt;
}

template <auto Member>
FieldValue resolution(const AdapterState& adapter)
{
    const std::optional<uint64_t>& packed = adapter.summary.*Member;
    return packed ? FieldValue{Resolution{*packed >> 48U, *packed >> 32U & 0xFFFFU,
                                          *packed & 0xFFFFFFFFU}}
                  : std::nullopt;
}

constexpr std::array<const char*, NIMBA_CONNECT_TYPE_NUM> kConnectorNames{"VGA", "DVI", "HDMI",
                                                                          "DP", "EDP"};

// The connectors' bits follow each other.
FieldValue display_types(const AdapterState& adapter)
{
    const auto& types = adapter.summary.display_types;
    if (!types) {
        return std::nullopt;
    }
    std::vector<std::string> names;
    for (std::size_t i = 0; i < kConnectorNames.size(); ++i) {
        if ((*types >> i & 1U) != 0) {
            names.emplace_back(kConnectorNames.at(i));
        }
    }
    return names;
}

using S = SummaryReading;
using C = ClockReading;

constexpr std::array kFields{
    FieldRow{"engine_clock", kDrivers, "{i}/eclk", of_clocks<&C::engine>, Chips::kAll, true},
    FieldRow{"video_clock", kDrivers, "{i}/vclk", of_clocks<&C::video>, Chips::kAll, true},
    FieldRow{"memory_clock", kDrivers, "{i}/mclk", of_clocks<&C::memory>, Chips::kAll, true},
    FieldRow{"frame_buffer_size", kDrivers, "{i}/fb_size", of_summary<&S::frame_buffer_size>},
    FieldRow{"memory_data_rate", kDrivers, "{i}/mclk, twice", of_summary<&S::memory_data_rate>,
             Chips::kNimba},
    FieldRow{"memory_data_rate", "MT/s", "dmidecode", of_summary<&S::memory_data_rate>,
             Chips::kOthers},
    FieldRow{"core_clock", kDrivers, "{i}/coreclk", of_clocks<&C::core>, Chips::kAll, true},
    FieldRow{"display_ports", "", "/proc/gpuinfo_{c}: Max Display Port",
             of_summary<&S::display_ports>, Chips::kNimba},
    FieldRow{"display_ports", "", "/proc/gpuinfo_{c}: Max Display Port, or drm/card{c}",
             of_summary<&S::display_ports>, Chips::kOthers},
    FieldRow{"display_types", "", "/proc/gpuinfo_{c}: Support Display Type", display_types,
             Chips::kNimba},
    FieldRow{"display_types", "", "/proc/gpuinfo_{c}: Support Display Type, or drm/card{c}",
             display_types, Chips::kOthers},
    FieldRow{"memory_channels", "", "{i}/miu_channel_num", of_summary<&S::memory_channels>},
    FieldRow{"pcie_lanes", "lanes", "current_link_width", of_summary<&S::link_width>},
    FieldRow{"memory_ddr_generation", "", "dmidecode", of_summary<&S::memory_type>},
    FieldRow{"memory_width_bits", "bits", "dmidecode", of_summary<&S::memory_bit_width>},

    FieldRow{"driver_version", "", "/proc/gpuinfo_{c}: Driver Version",
             version<&S::driver_version, driver_version_text>},
    FieldRow{"firmware_version", "", "/proc/gpuinfo_{c}: Firmware Version",
             version<&S::firmware_version, firmware_version_text>},
    FieldRow{"firmware_name", "", "/proc/gpuinfo_{c}: Firmware Name",
             of_summary<&S::firmware_name>},
    FieldRow{"pixel_fillrate", kDrivers, "/proc/gpuinfo_{c}: Pixel Fillrate",
             of_summary<&S::pixel_fillrate>},
    FieldRow{"texture_fillrate", kDrivers, "/proc/gpuinfo_{c}: Texture Fillrate",
             of_summary<&S::texture_fillrate>},
    FieldRow{"memory_clock_freq", kDrivers, "/proc/gpuinfo_{c}: Memory Clock Freq",
             of_summary<&S::memory_clock_freq>},
    FieldRow{"max_resolution_hdmi_dp", "pixels, Hz",
             "/proc/gpuinfo_{c}: HDMI Max Display Resolution, or DP",
             resolution<&S::max_resolution_hdmi_dp>},
    FieldRow{"max_resolution_vga", "pixels, Hz", "/proc/gpuinfo_{c}: VGA Max Display Resolution",
             resolution<&S::max_resolution_vga>},
    FieldRow{"memory_usage", kDrivers, "/proc/gpuinfo_{c}: GPU Memory Usage",
             of_summary<&S::memory_usage>},
    FieldRow{"use_rate_3d", kDrivers, "/proc/gpuinfo_{c}: GPU Use Rate(3d)",
             of_summary<&S::use_rate_3d>},
    FieldRow{"use_rate_video", kDrivers, "/proc/gpuinfo_{c}: GPU Use Rate(video)",
             of_summary<&S::use_rate_video>},
    FieldRow{"use_rate_vpp", kDrivers, "/proc/gpuinfo_{c}: GPU Use Rate(vpp)",
             of_summary<&S::use_rate_vpp>},
    FieldRow{"realtime_temperature", kDrivers, "/proc/gpuinfo_{c}: Realtime Temperature",
             of_summary<&S::temperature>},
    FieldRow{"pcie_generation", "", "/proc/gpuinfo_{c}: Bus Type", of_summary<&S::link_generation>},

    FieldRow{"engine_vcp_info", kDrivers, "{i}/engine_vcp_info",
             of_summary<&S::video_decoder_info>},
    FieldRow{"vbios_version_number", kDrivers, "{i}/vbios_version",
             of_summary<&S::vbios_version_number>},
    FieldRow{"pmp_version_number", kDrivers, "{i}/pmp_version", of_summary<&S::pmp_version_number>},
    FieldRow{"release_date_number", kDrivers, "{i}/release_date",
             of_summary<&S::release_date_number>},
    FieldRow{"driver_version_number", kDrivers, "{i}/driver_version",
             of_summary<&S::driver_version_number>},
    FieldRow{"slice_mask", kDrivers, "{i}/slice_mask", of_summary<&S::slice_mask>},
    FieldRow{"frame_buffer_free", kDrivers, "{i}/free_fb_mem", of_summary<&S::frame_buffer_free>},
    FieldRow{"enable_perf", kDrivers, "{i}/enable_perf", of_summary<&S::enable_perf>},
    FieldRow{"enable_usage", kDrivers, "{i}/enable_usage", of_summary<&S::enable_usage>},
    FieldRow{"power_case", kDrivers, "{i}/power_case", of_summary<&S::power_case>},
    FieldRow{"flip_count", "", "{i}/fps_count", of_summary<&S::flip_count>},
    FieldRow{"blit_count", "", "{i}/rxa_blt_scn_cnt", of_summary<&S::blit_count>},
};

// An adapter that could not be described counts as one of the others.
bool has(const AdapterState& adapter, Chips chips)
{
    const bool nimba =
        adapter.summary.adapter && adapter.summary.adapter->vendor_id == NIMBA_VENDOR_ID;
    return chips == Chips::kAll || (chips == Chips::kNimba) == nimba;
}

std::string source_text(const char* source, const AdapterState& adapter)
{
    const auto& described = adapter.summary.adapter;
    const bool qv = described && described->vendor_id == QV_VENDOR_ID;
    const std::string card =
        described && described->card ? std::to_string(*described->card) : std::string{"N"};
    return fmt::format(fmt::runtime(source), fmt::arg("i", qv ? "qv_info" : "jw_info"),
                       fmt::arg("c", card));
}

// So many parts of 16 bits each, but for the first, which has all bits above the others.
std::string hexadecimal_parts(uint64_t packed, unsigned parts)
{
    constexpr unsigned kBits = 16;
    std::string text = fmt::format("{:x}", packed >> kBits * (parts - 1));
    for (unsigned behind = parts - 1; behind-- > 0;) {
        text += fmt::format(".{:x}", packed >> kBits * behind & 0xFFFFU);
    }
    return text;
}

}  // namespace

std::vector<SummaryField> summary_fields(const AdapterState& adapter)
{
    std::vector<SummaryField> fields;
    for (const FieldRow& row : kFields) {
        if (has(adapter, row.chips)) {
            fields.push_back({row.key, row.unit, source_text(row.source, adapter), row.is_clock,
                              row.value(adapter)});
        }
    }
    return fields;
}

std::string driver_version_text(uint64_t packed)
{
    return hexadecimal_parts(packed, 3);
}

std::string firmware_version_text(uint64_t packed)
{
    return hexadecimal_parts(packed, 4);
}

std::string field_text(const FieldValue& value, const std::string& none)
{
    if (!value) {
        return none;
    }
    if (const auto* const number = std::get_if<int64_t>(&*value)) {
        return std::to_string(*number);
    }
    if (const auto* const text = std::get_if<std::string>(&*value)) {
        return *text;
    }
    if (const auto* const size = std::get_if<Resolution>(&*value)) {
        return fmt::format("{}x{}@{}", size->width, size->height, size->refresh_hz);
    }
    return fmt::format("{}", fmt::join(std::get<std::vector<std::string>>(*value), ", "));
}

Document field_json(const FieldValue& value)
{
    if (!value) {
        return nullptr;
    }
    if (const auto* const size = std::get_if<Resolution>(&*value)) {
        return {{"width", size->width}, {"height", size->height}, {"refresh_hz", size->refresh_hz}};
    }
    if (const auto* const number = std::get_if<int64_t>(&*value)) {
        return *number;
    }
    if (const auto* const text = std::get_if<std::string>(&*value)) {
        return *text;
    }
    return std::get<std::vector<std::string>>(*value);
}

Document summary_json(const AdapterState& adapter)
{
    Document object = Document::object();
    for (const SummaryField& field : summary_fields(adapter)) {
        if (!field.is_clock) {
            object[field.key] = field_json(field.value);
        }
    }
    return object;
}

}  // namespace nimba::smi
