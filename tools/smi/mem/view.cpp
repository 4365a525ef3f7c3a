// SPDX-License-Identifier: MIT
#include "tools/smi/mem/view.hpp"

#include <fmt/format.h>

#include <algorithm>
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

std::string size_in_unit(const std::optional<uint64_t>& size, SegmentUnit unit)
{
    return size ? fmt::format("{} {}", *size, unit.name) : kUnknown;
}

Row text_row(const std::string& label, const SegmentUse& use, SegmentSource source)
{
    const SegmentUnit unit = unit_of(source);
    const auto percent = used_percent(use);
    return {label,
            size_in_unit(use.used, unit),
            size_in_unit(use.total, unit),
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

std::optional<uint64_t> bytes_of(const std::optional<uint64_t>& size, SegmentSource source)
{
    return size ? std::optional(*size * unit_of(source).bytes) : std::nullopt;
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
                        cell(bytes_of(segment.use.used, table.source)),
                        cell(bytes_of(segment.use.total, table.source)),
                        names_of(table.source).key});
    }
    return rows;
}

Document use_json(const SegmentUse& use, SegmentSource source)
{
    return {{"used_bytes", or_null(bytes_of(use.used, source))},
            {"total_bytes", or_null(bytes_of(use.total, source))}};
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
    const uint64_t used = *use.used;
    const uint64_t least = used == 0 ? 0 : 1;
    const uint64_t width = std::clamp(used * kBarWidth / *use.total, least, kBarWidth);
    return std::string(width, '#') + std::string(kBarWidth - width, '.');
}

}  // namespace nimba::smi
