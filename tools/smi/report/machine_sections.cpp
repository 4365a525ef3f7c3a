// SPDX-License-Identifier: MIT
#include "tools/smi/report/sections.hpp"
#include "tools/smi/report/value.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace nimba::smi::page {
namespace {

// "3.8 GiB of 14.0 GiB", with a bar.
Html use_html(const Document& use)
{
    const auto used = number_of(member(use, {"used_bytes"}));
    const auto total = number_of(member(use, {"total_bytes"}));
    if (!used) {
        return Html::text(kUnknown);
    }
    const std::string text = size_of(member(use, {"used_bytes"}));
    if (!total || *total <= 0) {
        return Html::text(text);
    }
    Html html = Html::text(fmt::format("{} of {} ", text, size_of(member(use, {"total_bytes"}))));
    html += bar(*used / *total);
    return html;
}

std::string with_unit(const Document& value, const char* unit)
{
    return number_of(value) ? fmt::format("{} {}", text_of(value), unit) : kUnknown;
}

Cells overview_row(const Document& adapter)
{
    const Document& answered = member(adapter, {"answered"});
    const bool silent = answered.is_boolean() && !answered.get<bool>();
    return {Html::text(adapter_title(adapter)),
            Html::text(silent ? "does not answer" : text_of(member(adapter, {"driver"}))),
            use_html(member(adapter, {"memory", "sum"})),
            Html::text(with_unit(member(adapter, {"sensors", "temperature_celsius"}), "°C")),
            Html::text(text_of(member(adapter, {"clocks", "engine_clock"}))),
            Html::text(text_of(member(adapter, {"clocks", "dvfs_level"}))),
            Html::text(with_unit(member(adapter, {"usage", "engine_3d_percent"}), "%"))};
}

Html versions(const Content& content)
{
    const Document& version = content.document(kVersion);
    const std::array<std::array<std::string, 2>, 5> lines{{
        {"Machine",
         content.capture ? "captured in " + *content.capture : "this one, asked directly"},
        {"Time", content.time},
        {"nimba-smi", content.tool},
        {"Library", fmt::format("{}, {}", text_of(member(version, {"library", "version"})),
                                text_of(member(version, {"library", "path"})))},
        {"Interface",
         fmt::format("{}, of the tool {}: {}", text_of(member(version, {"interface", "version"})),
                     text_of(member(version, {"interface", "client_version"})),
                     text_of(member(version, {"interface", "match"})))},
    }};
    Html html;
    for (const auto& [name, value] : lines) {
        html += element("dt", Html::text(name));
        html += element("dd", Html::text(value));
        html += Html::markup("\n");
    }
    return element("dl", html);
}

// The names of the members of all objects, in the order in which they come.
std::vector<std::string> names_in(const std::vector<const Document*>& objects)
{
    std::set<std::string> known;
    std::vector<std::string> names;
    for (const Document* const object : objects) {
        if (!object->is_object()) {
            continue;
        }
        for (const auto& [name, value] : object->items()) {
            if (known.insert(name).second) {
                names.push_back(name);
            }
        }
    }
    return names;
}

// Of a value that is no scalar, its parts: "3840, 2160, 60".
std::string parts_text(const Document& value)
{
    constexpr std::size_t kMost = 16;
    if (!value.is_structured()) {
        return text_of(value);
    }
    std::string text;
    std::size_t count = 0;
    for (const Document& part : value) {
        if (++count > kMost) {
            return text + fmt::format(" and {} more", value.size() - kMost);
        }
        text += (text.empty() ? "" : ", ") + text_of(part);
    }
    return text.empty() ? kUnknown : text;
}

}  // namespace

Html adapters_left_out(const Document& document)
{
    return left_out(adapters_of(document).size(), whole_size(document, "adapters"), "adapters");
}

Html overview_section(const Content& content)
{
    Html html = versions(content);
    if (content.redacted) {
        html += paragraph("Names of processes and paths are stand-ins.");
    }
    std::vector<Cells> rows;
    for (const Document* const adapter : adapters_of(content.overview)) {
        rows.push_back(overview_row(*adapter));
    }
    html += rows.empty() ? paragraph("There is no adapter of the product.")
                         : table("Adapters",
                                 {{"Adapter"},
                                  {"Driver"},
                                  {"Memory used"},
                                  {"Temperature", true},
                                  {"Engine clock", true},
                                  {"DVFS level"},
                                  {"3D engine", true}},
                                 rows);
    html += adapters_left_out(content.overview);
    const Document& foreign = member(content.overview, {"foreign_gpu"});
    if (foreign.is_object()) {
        html += paragraph("There is a GPU of another vendor: " + parts_text(foreign) + '.');
    }
    return html;
}

Html summary_section(const Content& content)
{
    std::vector<Column> columns{{"Field"}};
    std::vector<const Document*> summaries;
    for (const Document* const adapter : adapters_of(content.overview)) {
        columns.push_back({adapter_title(*adapter)});
        summaries.push_back(&member(*adapter, {"summary"}));
    }
    constexpr std::size_t kMost = 100;
    const std::vector<std::string> names = names_in(summaries);
    std::vector<Cells> rows;
    for (const std::string& name : std::span{names}.first(std::min(names.size(), kMost))) {
        Cells cells{Html::text(name)};
        for (const Document* const summary : summaries) {
            cells.push_back(Html::text(parts_text(member(*summary, {name.c_str()}))));
        }
        rows.push_back(std::move(cells));
    }
    if (rows.empty()) {
        return paragraph("No adapter told a summary.");
    }
    Html html = table("Every field of the summaries", columns, rows);
    html += left_out(rows.size(), names.size(), "fields");
    html += adapters_left_out(content.overview);
    return html;
}

}  // namespace nimba::smi::page
