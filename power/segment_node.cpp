// SPDX-License-Identifier: MIT
// The memory segments as the driver's info node tells them.
#include "core/current_adapter.hpp"
#include "core/node_buffer.hpp"
#include "core/scan_text.hpp"
#include "nimba_mgmt_interface.h"

#include <cstdint>
#include <cstdio>

namespace nimba {
namespace {

constexpr int kShortestNode = 20;
constexpr uint32_t kNodeUnits = 1000;
constexpr uint32_t kSumSegment = 4;

using SegmentBuffer = NodeBuffer<512>;

// What stands behind the segment's key, or null.
const char* find_segment(const SegmentBuffer& node, uint32_t segment)
{
    char key[32];
    std::snprintf(key, sizeof key, "segment_id:%u,", segment);
    return node.behind(key);
}

// Returns the number of segments.
uint32_t take_segments(const SegmentBuffer& node, SegmentInfo& info)
{
    uint32_t segment = 0;
    for (; segment < SEGMENT_INFO_NUM; ++segment) {
        const char* const text = find_segment(node, segment);
        if (text == nullptr) {
            break;
        }
        uint32_t& total = info.total_size[segment];
        uint32_t& used = info.used_size[segment];
        scan_text(text, "total_size:%u,used_size:%u", &total, &used);
        total /= kNodeUnits;
        used /= kNodeUnits;
    }
    return segment;
}

}  // namespace
}  // namespace nimba

int32_t gpuinfo_get_segment_info(SegmentInfo* info)
{
    nimba::SegmentBuffer node;
    if (node.read(nimba::info_directory(), "segment_info") < nimba::kShortestNode) {
        return -1;
    }
    const uint32_t count = nimba::take_segments(node, *info);
    for (uint32_t segment = nimba::kSumSegment + 1; segment < count; ++segment) {
        info->total_size[nimba::kSumSegment] += info->total_size[segment];
        info->used_size[nimba::kSumSegment] += info->used_size[segment];
    }
    return count > 0 ? 1 : -1;
}
