// SPDX-License-Identifier: MIT
#include "driver/memory_segments.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace nimba::sim {

std::string segment_info_text(const std::vector<MemorySegment>& segments)
{
    std::string text;
    for (const auto& [id, total, used] : segments) {
        fmt::format_to(std::back_inserter(text), "segment_id:{},total_size:{},used_size:{}\n", id,
                       total / 1000, used / 1000);
    }
    return text;
}

void MemorySegments::set_allocated(std::size_t segment, uint64_t bytes)
{
    if (segment < allocated_.size()) {
        allocated_[segment] = bytes;
    }
}

MemorySegment MemorySegments::now(const MemorySegment& segment) const
{
    const uint64_t free = segment.total - segment.used;
    return {segment.id, segment.total, segment.used + std::min(allocated_.at(segment.id), free)};
}

std::vector<MemorySegment> MemorySegments::all() const
{
    std::vector<MemorySegment> segments;
    std::ranges::transform(description_, std::back_inserter(segments),
                           [this](const MemorySegment& segment) { return now(segment); });
    return segments;
}

std::optional<MemorySegment> MemorySegments::find(std::size_t id) const
{
    const auto segment = find_without_allocations(id);
    return segment ? std::optional{now(*segment)} : std::nullopt;
}

std::optional<MemorySegment> MemorySegments::find_without_allocations(std::size_t id) const
{
    const auto segment = std::ranges::find(description_, id, &MemorySegment::id);
    return segment == description_.end() ? std::nullopt : std::optional{*segment};
}

}  // namespace nimba::sim
