// SPDX-License-Identifier: MIT
#include "tools/smi/top/description.hpp"

#include "tools/smi/clocks/figures.hpp"
#include "tools/smi/summary/fields.hpp"
#include "tools/smi/text/printable.hpp"
#include "tools/smi/top/unicode.hpp"

#include <fmt/core.h>

#include <variant>
#include <vector>

namespace nimba::smi::top {
namespace {

constexpr const char* kBetween = " · ";

// "PCIe 4 x16", or what is known of it; empty without anything.
std::string link_text(const SummaryReading& summary)
{
    const std::string generation =
        summary.link_generation ? fmt::format(" {}", *summary.link_generation) : "";
    const std::string width = summary.link_width ? fmt::format(" x{}", *summary.link_width) : "";
    return generation.empty() && width.empty() ? "" : "PCIe" + generation + width;
}

// The name of the DVFS level; empty when it is not known.
std::string level_text(const ClockReading& clocks)
{
    const Figure level = clock_figures(clocks).back();
    return level ? "level " + std::get<std::string>(*level) : "";
}

template <typename Value>
std::string labelled(const char* label, const std::optional<Value>& value)
{
    return value ? fmt::format("{} {}", label, *value) : "";
}

// In the order of their weight.
std::vector<std::string> parts(const AdapterState& adapter)
{
    const SummaryReading& summary = adapter.summary;
    std::vector<std::string> parts{adapter.adapter.bus_id, link_text(summary),
                                   level_text(adapter.clocks),
                                   labelled("fan", adapter.sensors.fan_speed)};
    if (summary.driver_version) {
        parts.push_back("driver " + driver_version_text(*summary.driver_version));
    }
    if (summary.firmware_version) {
        parts.push_back("firmware " + firmware_version_text(*summary.firmware_version));
    }
    if (summary.firmware_name) {
        parts.push_back(printable(*summary.firmware_name));
    }
    parts.push_back(labelled("GFX clock", adapter.clocks.gfx));
    parts.push_back(labelled("video clock", adapter.clocks.video));
    parts.push_back(labelled("engine clock", adapter.clocks.engine));
    return parts;
}

}  // namespace

std::string description(const AdapterState& adapter, int width)
{
    std::string text;
    for (const std::string& part : parts(adapter)) {
        if (part.empty()) {
            continue;
        }
        const std::string addition = (text.empty() ? "" : kBetween) + part;
        if (width_of(text) + width_of(addition) <= width) {
            text += addition;
        }
    }
    return text;
}

}  // namespace nimba::smi::top
