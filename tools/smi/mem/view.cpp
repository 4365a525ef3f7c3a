// SPDX-License-Identifier: MIT
#include "tools/smi/mem/view.hpp"

#include "tools/smi/text/bar.hpp"
#include "tools/smi/text/json.hpp"
#include "tools/smi/text/size.hpp"

#include <fmt/core.h>

#include <cstdint>

namespace nimba::smi {
namespace {

constexpr uint64_t kBarWidth = 20;
constexpr const char* kUnknown = "n/a";

struct SourceNames {
    const char* key;
    const char* text;
};

SourceNames names_of(SegmentSource source)
{
    switch (source) {
        case SegmentSource::kNode:
            return {"node", "segment_info"};
        case SegmentSource::kHeaps:
            return {"heaps", "heaps and allocations"};
        case SegmentSource::kAllocations:
            break;
    }
    return {"allocations", "allocations"};
}

// In the source's own unit, unless another was chosen.
std::string size_cell(const std::optional<uint64_t>& size, SegmentSource source)
{
    if (!size) {
        return kUnknown;
    }
    return chosen_size_unit() == SizeUnit::kAuto ? fmt::format("{} {}", *size, unit_of(source).name)
                                                 : size_text(*in_bytes(size, source));
}

Row text_row(const std::string& label, const SegmentUse& use, SegmentSource source)
{
    const auto percent = used_percent(use);
    return {label,
            size_cell(use.used, source),
            size_cell(use.total, source),
            percent ? fmt::format("{}%", *percent) : kUnknown,
            bar_text(use),
            names_of(source).text};
}

std::vector<Row> text_rows(const SegmentTable& table)
{
    std::vector<Row> rows;
    for (const Segment& segment : table.segments) {
        rows.push_back(
            text_row(segment.label + (segment.name ? ' ' + *segment.name : std::string{}),
                     segment.use, table.source));
    }
    rows.push_back(text_row("all", table.sum, table.source));
    return rows;
}

std::string cell(const std::optional<uint64_t>& bytes)
{
    return bytes ? std::to_string(*bytes) : "";
}

std::vector<Row> csv_rows(const SegmentTable& table)
{
    std::vector<Row> rows;
    for (const Segment& segment : table.segments) {
        rows.push_back({segment.label, segment.name.value_or(""),
                        cell(in_bytes(segment.use.used, table.source)),
                        cell(in_bytes(segment.use.total, table.source)),
                        names_of(table.source).key});
    }
    return rows;
}

Document use_json(const SegmentUse& use, SegmentSource source)
{
    return {{"used_bytes", or_null(in_bytes(use.used, source))},
            {"total_bytes", or_null(in_bytes(use.total, source))}};
}

Document json(const SegmentTable& table)
{
    Document segments = Document::array();
    for (const Segment& segment : table.segments) {
        Document object{{"segment", segment.label}, {"name", or_null(segment.name)}};
        object.update(use_json(segment.use, table.source));
        segments.push_back(std::move(object));
    }
    return {{"source", names_of(table.source).key},
            {"unit", unit_of(table.source).name},
            {"segments", std::move(segments)},
            {"sum", use_json(table.sum, table.source)}};
}

}  // namespace

MonitorView<SegmentTable> segments_view()
{
    return {"nimba-smi.mem.1",
            {"SEGMENT", "USED", "TOTAL", "USE", "", "SOURCE"},
            {1, 2, 3},
            {"segment", "name", "used_bytes", "total_bytes", "source"},
            text_rows,
            csv_rows,
            json};
}

std::string bar_text(const SegmentUse& use)
{
    if (!used_percent(use)) {
        return {};
    }
    const uint64_t width = bar_length(*use.used, *use.total, kBarWidth);
    return std::string(width, '#') + std::string(kBarWidth - width, '.');
}

}  // namespace nimba::smi
