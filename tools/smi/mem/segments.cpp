// SPDX-License-Identifier: MIT
#include "tools/smi/mem/segments.hpp"

#include <array>
#include <cstddef>

namespace nimba::smi {
namespace {

constexpr std::size_t kRest = 4;  // without the node: all segments from there on

constexpr SegmentUnit kMegabyte{"MB", 1'000'000};
constexpr SegmentUnit kMebibyte{"MiB", 1'048'576};

std::optional<uint64_t> plus(const std::optional<uint64_t>& a, const std::optional<uint64_t>& b)
{
    return a && b ? std::optional(*a + *b) : std::nullopt;
}

}  // namespace

SegmentUnit unit_of(SegmentSource source)
{
    return source == SegmentSource::kNode ? kMegabyte : kMebibyte;
}

std::optional<uint64_t> in_bytes(const std::optional<uint64_t>& size, SegmentSource source)
{
    return size ? std::optional(*size * unit_of(source).bytes) : std::nullopt;
}

SegmentTable segment_table(const SegmentReading& reading)
{
    const bool has_rest = reading.source != SegmentSource::kNode;
    SegmentTable table{reading.source, {}, {0, 0}};
    for (std::size_t i = 0; i < reading.segments.size(); ++i) {
        const SegmentUse& use = reading.segments[i];
        const bool is_rest = has_rest && i == kRest;
        if (is_rest && use.used == 0U) {
            continue;
        }
        const bool is_heap = reading.source == SegmentSource::kHeaps && i < kHeapNames.size();
        table.segments.push_back(
            {std::to_string(i) + (is_rest ? "+" : ""),
             is_heap ? std::optional<std::string>(kHeapNames[i]) : std::nullopt, use});
        table.sum = {plus(table.sum.used, use.used), plus(table.sum.total, use.total)};
    }
    return table;
}

std::optional<uint64_t> used_percent(const SegmentUse& use)
{
    constexpr uint64_t kWhole = 100;
    return use.used && use.total && *use.total != 0 ? std::optional(*use.used * kWhole / *use.total)
                                                    : std::nullopt;
}

}  // namespace nimba::smi
