// SPDX-License-Identifier: MIT
#include "tools/smi/report/sections.hpp"
#include "tools/smi/report/value.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace nimba::smi::page {
namespace {

constexpr std::size_t kMostSegments = 32;
constexpr std::size_t kSegmentColumns = 8;
constexpr std::size_t kMostProcesses = 100;
constexpr std::size_t kMostAllocations = 100;
constexpr std::size_t kMostGroups = 50;
constexpr std::size_t kMostOwners = 4;

Html text_cell(const Document& value, std::initializer_list<const char*> path)
{
    return Html::text(text_of(member(value, path)));
}

Html size_cell(const Document& value, std::initializer_list<const char*> path)
{
    return Html::text(size_of(member(value, path)));
}

Html segments(const Document& adapter)
{
    std::vector<Cells> rows;
    const Document& told = list(adapter, {"memory", "segments"});
    for (const Document& segment : told) {
        if (rows.size() == kMostSegments) {
            break;
        }
        const double used = number_of(member(segment, {"used_bytes"})).value_or(0);
        const double total = number_of(member(segment, {"total_bytes"})).value_or(0);
        const Document& name = member(segment, {"name"});
        const std::string number = text_of(member(segment, {"segment"}));
        rows.push_back(
            {Html::text(name.is_string() ? fmt::format("{} ({})", number, text_of(name)) : number),
             size_cell(segment, {"used_bytes"}), size_cell(segment, {"total_bytes"}),
             total > 0 ? bar(used / total) : Html{}});
    }
    if (rows.empty()) {
        return paragraph("Its segments could not be read.");
    }
    Html html = table("Memory segments of " + adapter_title(adapter),
                      {{"Segment"}, {"Used", true}, {"Size", true}, {"Part in use"}}, rows);
    html += left_out(rows.size(), whole_size(member(adapter, {"memory"}), "segments"), "segments");
    return html;
}

Html processes(const Document& adapter)
{
    const Document& devices = list(adapter, {"processes", "devices"});
    if (!member(adapter, {"processes"}).is_object()) {
        return paragraph("Its device contexts could not be read.");
    }
    std::vector<Column> columns{
        {"Device context"}, {"Process (pid)"}, {"Allocations", true}, {"Memory", true}};
    const Document& total = member(adapter, {"processes", "total"});
    std::vector<std::string> segment_names;
    std::size_t segments_in_use = 0;
    for (const auto& [name, bytes] : member(total, {"segments"}).items()) {
        if (bytes != 0 && ++segments_in_use <= kSegmentColumns) {
            segment_names.push_back(name);
            columns.push_back({"Segment " + name, true});
        }
    }
    const auto row = [&](Html first, Html second, const Document& use) {
        Cells cells{std::move(first), std::move(second), text_cell(use, {"allocations"}),
                    size_cell(use, {"bytes"})};
        for (const std::string& name : segment_names) {
            cells.push_back(size_cell(use, {"segments", name.c_str()}));
        }
        return cells;
    };
    std::vector<Cells> rows;
    for (const Document& device : devices) {
        if (rows.size() < kMostProcesses) {
            rows.push_back(
                row(text_cell(device, {"device"}), Html::text(processes_text(device)), device));
        }
    }
    const std::size_t shown = rows.size();
    rows.push_back(row(Html::text("all"), Html{}, total));
    Html html = table("Memory by process of " + adapter_title(adapter), columns, rows);
    html +=
        left_out(shown, whole_size(member(adapter, {"processes"}), "devices"), "device contexts");
    html += left_out(segment_names.size(), segments_in_use, "segments in use");
    return html;
}

// "1920 x 1080"
std::string shape_text(const Document& shape)
{
    return fmt::format("{} x {}", text_of(member(shape, {"width"})),
                       text_of(member(shape, {"height"})));
}

// "0x13 /usr/games/maze (4100003): 3; ..."
std::string owners_text(const Document& group)
{
    std::string text;
    std::size_t told = 0;
    const Document& owners = list(group, {"owners"});
    for (const Document& owner : owners) {
        if (++told > kMostOwners) {
            return text + fmt::format("; {} more", whole_size(group, "owners") - kMostOwners);
        }
        text +=
            fmt::format("{}{} {}: {}", text.empty() ? "" : "; ", text_of(member(owner, {"device"})),
                        processes_text(owner), text_of(member(owner, {"count"})));
    }
    return text.empty() ? kUnknown : text;
}

}  // namespace

Html memory_section(const Content& content)
{
    Html html;
    for (const Document* const adapter : adapters_of(content.overview)) {
        html += heading(adapter_title(*adapter));
        html += segments(*adapter);
        html += processes(*adapter);
    }
    html += adapters_left_out(content.overview);
    return html.empty() ? paragraph("There is no adapter to tell of.") : html;
}

Html allocations_section(const Content& content)
{
    const Document& document = content.document(kAllocations);
    std::vector<Cells> rows;
    for (const Document& allocation : list(document, {"allocations"})) {
        if (rows.size() < kMostAllocations) {
            rows.push_back(
                {text_cell(allocation, {"handle"}), text_cell(allocation, {"bus_id"}),
                 Html::text(processes_text(allocation)), text_cell(allocation, {"device"}),
                 size_cell(allocation, {"size"}), text_cell(allocation, {"segmentid"}),
                 Html::text(shape_text(allocation)), text_cell(allocation, {"hw_format"}),
                 text_cell(allocation, {"at_type"}), text_cell(allocation, {"gpu_virt_addr"})});
        }
    }
    if (rows.empty()) {
        return paragraph("No allocation was read.");
    }
    Html html = paragraph(fmt::format("{} allocations, {} in all. The {} largest:",
                                      text_of(member(document, {"all", "allocations"})),
                                      size_of(member(document, {"all", "bytes"})), rows.size()));
    html += table("Largest allocations",
                  {{"Handle"},
                   {"Adapter"},
                   {"Process (pid)"},
                   {"Device"},
                   {"Size", true},
                   {"Segment", true},
                   {"Pixels"},
                   {"Format", true},
                   {"Type", true},
                   {"GPU address"}},
                  rows);
    return html;
}

Html leaks_section(const Content& content)
{
    const Document& document = content.document(kLeaks);
    const Document& groups = list(document, {"groups"});
    std::vector<Cells> rows;
    for (const Document& group : groups) {
        if (rows.size() < kMostGroups) {
            rows.push_back({Html::text(shape_text(group)), text_cell(group, {"bus_id"}),
                            size_cell(group, {"size"}), text_cell(group, {"hw_format"}),
                            text_cell(group, {"at_type"}), text_cell(group, {"count"}),
                            size_cell(group, {"bytes"}), Html::text(owners_text(group))});
        }
    }
    if (rows.empty()) {
        return paragraph("No group of like allocations was told.");
    }
    Html html = paragraph(
        "Allocations of one shape that are alive together, the largest groups first. One look at "
        "them does not tell whether a group grows: nimba-smi leaks does.");
    html += table("Groups of like allocations",
                  {{"Pixels"},
                   {"Adapter"},
                   {"Size of one", true},
                   {"Format", true},
                   {"Type", true},
                   {"Count", true},
                   {"Together", true},
                   {"Device, process (pid), count"}},
                  rows);
    html += left_out(rows.size(), whole_size(document, "groups"), "groups");
    return html;
}

}  // namespace nimba::smi::page
