// SPDX-License-Identifier: MIT
#include "memory_segment_reader.hpp"

#include "claims.hpp"
#include "driver/memory_segments.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <string>

namespace nimba::sim {
namespace {

constexpr std::array<std::string_view, 3> kSegmentKeys{"id", "total", "used"};
constexpr int64_t kGreatestTotal = int64_t{1} << 40U;
constexpr std::size_t kLongestText = 511;  // of the node segment_info

constexpr uint64_t kMebibyte = uint64_t{1} << 20U;
constexpr uint64_t kGibibyte = uint64_t{1} << 30U;

std::vector<MemorySegment> default_segments(bool is_qv)
{
    if (is_qv) {
        return {{0, 0, 0},
                {1, 2 * kGibibyte, 64 * kMebibyte},
                {2, kGibibyte, 16 * kMebibyte},
                {3, kGibibyte, 0}};
    }
    return {
        {0, 4 * kGibibyte, 256 * kMebibyte}, {1, 2 * kGibibyte, 32 * kMebibyte}, {2, kGibibyte, 0}};
}

// The text of segment_info when no byte is free.
std::size_t longest_text(std::vector<MemorySegment> segments)
{
    for (MemorySegment& segment : segments) {
        segment.used = segment.total;
    }
    return segment_info_text(segments).size();
}

}  // namespace

std::vector<MemorySegment> read_memory_segments(const TableReader& adapter, bool is_qv)
{
    if (!adapter.has("segment")) {
        return default_segments(is_qv);
    }
    std::vector<MemorySegment> segments;
    Claims claims;
    const auto greatest_id = static_cast<int64_t>(is_qv ? kHeapNames.size() : kMostSegments) - 1;
    int64_t next = 0;
    for (const TableReader& table : adapter.tables("segment", kSegmentKeys)) {
        const int64_t id = table.integer_or("id", 0, greatest_id, next);
        if (id > greatest_id) {
            table.reject("id", fmt::format("a whole number from 0 to {}", greatest_id));
        }
        claims.take("segment id", std::to_string(id), table, "id");
        next = std::max(next, id + 1);
        const int64_t total = table.integer("total", 0, kGreatestTotal);
        const int64_t used = table.integer_or("used", 0, total, 0);
        segments.push_back({static_cast<std::size_t>(id), static_cast<uint64_t>(total),
                            static_cast<uint64_t>(used)});
    }
    std::ranges::sort(segments, {}, &MemorySegment::id);
    if (!is_qv && longest_text(segments) > kLongestText) {
        adapter.reject("segment", fmt::format("segments that 'segment_info' can show in {} bytes",
                                              kLongestText));
    }
    return segments;
}

}  // namespace nimba::sim
