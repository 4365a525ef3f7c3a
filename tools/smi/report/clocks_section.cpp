// SPDX-License-Identifier: MIT
#include "tools/smi/report/plot.hpp"
#include "tools/smi/report/sections.hpp"
#include "tools/smi/report/value.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace nimba::smi::page {
namespace {

constexpr std::size_t kMostSettings = 100;

struct Figure {
    const char* name;
    const char* group;  // member of an adapter
    const char* key;    // member of the group
};

struct Picture {
    const char* title;
    const char* unit;
    std::vector<Figure> figures;
};

const std::vector<Picture>& pictures()
{
    static const std::vector<Picture> all{
        {"Clocks",
         "",
         {{"engine clock", "clocks", "engine_clock"},
          {"video clock", "clocks", "video_clock"},
          {"memory clock", "clocks", "memory_clock"},
          {"core clock", "clocks", "core_clock"},
          {"graphics clock of DVFS", "clocks", "gfx_clock"}}},
        {"Voltage", "", {{"graphics voltage of DVFS", "clocks", "gfx_voltage"}}},
        {"Temperature", "°C", {{"temperature", "sensors", "temperature_celsius"}}},
        {"Fans", "", {{"fan 0", "sensors", "fan0"}, {"fan 1", "sensors", "fan1"}}},
        {"Engine use",
         "%",
         {{"3D engine", "usage", "engine_3d_percent"},
          {"VCP engine", "usage", "engine_vcp_percent"},
          {"VPP engine", "usage", "engine_vpp_percent"}}},
        {"Frame rate", "", {{"frames per second", "usage", "frames_per_second"}}},
    };
    return all;
}

// The adapter of that bus id in a sample; null when it is not there.
const Document& adapter_in(const TimedFigures& sample, const Document& bus_id)
{
    const Document& adapters = sample.adapters;
    const auto found = std::ranges::find_if(
        adapters, [&](const Document& adapter) { return member(adapter, {"bus_id"}) == bus_id; });
    return found == adapters.end() ? member(adapters, {"no such adapter"}) : *found;
}

std::vector<double> times_of(const Content& content)
{
    std::vector<double> seconds;
    for (const TimedFigures& sample : content.samples) {
        seconds.push_back(sample.seconds);
    }
    return seconds;
}

// What `read` makes of the adapter in each sample.
template <typename Read>
std::vector<std::optional<double>> values_of(const Content& content, const Document& bus_id,
                                             Read read)
{
    std::vector<std::optional<double>> values;
    for (const TimedFigures& sample : content.samples) {
        values.push_back(read(adapter_in(sample, bus_id)));
    }
    return values;
}

Html plots(const Content& content, const Document& adapter)
{
    const Document& bus_id = member(adapter, {"bus_id"});
    const std::vector<double> times = times_of(content);
    Html html;
    for (const Picture& picture : pictures()) {
        Plot plot{picture.title, picture.unit, times, {}};
        for (const Figure& figure : picture.figures) {
            plot.lines.push_back(
                {figure.name, values_of(content, bus_id, [&](const Document& state) {
                     return number_of(member(state, {figure.group, figure.key}));
                 })});
        }
        html += plot_html(plot);
    }
    constexpr double kMib = 1 << 20;
    html += plot_html({"Video memory in use",
                       "MiB",
                       times,
                       {{"all segments", values_of(content, bus_id, [](const Document& state) {
                             const auto used = number_of(member(state, {"used_bytes"}));
                             return used ? std::optional{*used / kMib} : std::nullopt;
                         })}}});
    return element("div", html, R"(class="figures")");
}

// When the DVFS level became another.
Html levels(const Content& content, const Document& adapter)
{
    constexpr std::size_t kMost = 50;
    const Document& bus_id = member(adapter, {"bus_id"});
    std::vector<Cells> rows;
    std::size_t changes = 0;
    std::string before;
    for (const TimedFigures& sample : content.samples) {
        std::string level = text_of(member(adapter_in(sample, bus_id), {"clocks", "dvfs_level"}));
        if (level == before) {
            continue;
        }
        if (++changes <= kMost) {
            rows.push_back(
                {Html::text(fmt::format("{:.6g} s", sample.seconds)), Html::text(level)});
        }
        before = std::move(level);
    }
    Html html = table("DVFS level over time", {{"From", true}, {"Level"}}, rows);
    html += left_out(rows.size(), changes, "changes");
    return html;
}

Html clocks_now(const Content& content)
{
    std::vector<Column> columns{{"Figure"}};
    std::vector<Cells> rows;
    for (const Document* const adapter : adapters_of(content.overview)) {
        columns.push_back({adapter_title(*adapter), true});
    }
    for (const Picture& picture : pictures()) {
        for (const Figure& figure : picture.figures) {
            const std::string unit = *picture.unit == '\0' ? "" : fmt::format(", {}", picture.unit);
            Cells cells{Html::text(figure.name + unit)};
            for (const Document* const adapter : adapters_of(content.overview)) {
                cells.push_back(Html::text(text_of(member(*adapter, {figure.group, figure.key}))));
            }
            rows.push_back(std::move(cells));
        }
    }
    return table("Clocks, sensors and use", columns, rows);
}

Html settings(const Content& content)
{
    const auto adapters = adapters_of(content.document(kDvfs));
    if (adapters.empty()) {
        return paragraph("The power and DVFS settings could not be read.");
    }
    std::vector<Column> columns{{"Setting"}};
    for (const Document* const adapter : adapters) {
        columns.push_back({adapter_title(*adapter), true});
    }
    std::vector<Cells> rows;
    const Document& first = member(*adapters.front(), {"fields"});
    for (const auto& [name, value] : first.items()) {
        if (rows.size() == kMostSettings) {
            break;
        }
        Cells cells{Html::text(name)};
        for (const Document* const adapter : adapters) {
            cells.push_back(Html::text(text_of(member(*adapter, {"fields", name.c_str()}))));
        }
        rows.push_back(std::move(cells));
    }
    Html html = table("Power and DVFS settings", columns, rows);
    html += left_out(rows.size(), first.size(), "settings");
    html += adapters_left_out(content.document(kDvfs));
    return html;
}

}  // namespace

Html clocks_section(const Content& content)
{
    const auto adapters = adapters_of(content.overview);
    if (adapters.empty()) {
        return paragraph("There is no adapter to tell of.");
    }
    Html html = clocks_now(content);
    html += adapters_left_out(content.overview);
    html += paragraph("Clocks, voltage and fans are in the driver's own units.");
    if (content.samples.size() == 1) {
        html += paragraph("There is one sample alone, and nothing to plot.");
    } else {
        for (const Document* const adapter : adapters) {
            html += heading(
                fmt::format("{} over {} samples", adapter_title(*adapter), content.samples.size()));
            html += plots(content, *adapter);
            html += levels(content, *adapter);
        }
    }
    html += settings(content);
    return html;
}

}  // namespace nimba::smi::page
