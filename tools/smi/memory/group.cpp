// SPDX-License-Identifier: MIT
#include "tools/smi/memory/group.hpp"

#include <algorithm>
#include <map>

namespace nimba::smi {
namespace {

struct Members {
    int32_t oldest_hits = 0;
    std::map<uint32_t, uint64_t> by_device;
};

Shape shape_of(const Allocation& allocation)
{
    return {allocation.width, allocation.height, unsigned_bits(allocation.size),
            allocation.hw_format, allocation.at_type};
}

LeakGroup group_of(const Shape& shape, const Members& members)
{
    LeakGroup group{shape, members.oldest_hits, {}};
    for (const auto& [device, count] : members.by_device) {
        group.owners.push_back({device, count});
    }
    return group;
}

}  // namespace

std::vector<LeakGroup> group_by_shape(std::span<const Allocation> allocations)
{
    std::map<Shape, Members> shapes;
    for (const Allocation& allocation : allocations) {
        Members& members = shapes[shape_of(allocation)];
        members.oldest_hits = std::max(members.oldest_hits, allocation.hit_count);
        ++members.by_device[unsigned_bits(allocation.device)];
    }
    std::vector<LeakGroup> groups;
    groups.reserve(shapes.size());
    for (const auto& [shape, members] : shapes) {
        groups.push_back(group_of(shape, members));
    }
    return groups;
}

}  // namespace nimba::smi
