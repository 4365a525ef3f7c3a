// SPDX-License-Identifier: MIT
// Use and size of the current adapter's memory segments.
#include "core/chip_table.hpp"
#include "core/current_adapter.hpp"
#include "nimba_mgmt_interface.h"

#include <array>
#include <cstddef>

namespace nimba {
namespace {

enum class SegmentSource { kAllocations, kNode, kHeaps };

// Where get_segment_info reads. Written by segment_init alone.
SegmentSource segment_source = SegmentSource::kAllocations;

// The allocations tell what is used, in the first segments.
int32_t read_allocations(SegmentInfo& info)
{
    std::array<int32_t, SEGMENT_SLOT_NUM> used{};
    const int32_t status =
        get_segment_info_through_allocation(used.data(), current_chip_id, current_is_va_driver);
    for (std::size_t segment = 0; segment < used.size(); ++segment) {
        info.used_size[segment] += static_cast<uint32_t>(used[segment]);
    }
    return status;
}

}  // namespace
}  // namespace nimba

int32_t segment_init(find_adapter* rec)
{
    using nimba::SegmentSource;
    nimba::segment_source = SegmentSource::kAllocations;
    const bool has_node = nimba::is_nimba_chip(rec->header.chip_id[rec->chip_id_idx]);
    SegmentInfo attempt{};
    const int32_t status =
        has_node ? gpuinfo_get_segment_info(&attempt) : gpuinfo_get_kmd_segment_info(&attempt, 0);
    if (status > 0) {
        nimba::segment_source = has_node ? SegmentSource::kNode : SegmentSource::kHeaps;
    }
    return status;
}

int32_t get_segment_info(SegmentInfo* info)
{
    using nimba::SegmentSource;
    *info = {};
    if (nimba::segment_source == SegmentSource::kNode) {
        return gpuinfo_get_segment_info(info);
    }
    if (nimba::segment_source == SegmentSource::kHeaps) {
        gpuinfo_get_kmd_segment_info(info, 0);
    }
    return nimba::read_allocations(*info);
}
