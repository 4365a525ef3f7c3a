// SPDX-License-Identifier: MIT
#include "tools/smi/export/leak_groups.hpp"

#include "nimba_mgmt_interface.h"

#include <algorithm>
#include <functional>
#include <tuple>

namespace nimba::smi::exporting {

std::vector<LeakGroupSize> largest_leak_groups(std::span<const LeakGroup> groups)
{
    std::vector<LeakGroupSize> sizes;
    for (const LeakGroup& group : groups) {
        LeakGroupSize& size = sizes.emplace_back(LeakGroupSize{group.shape, 0, group.oldest_hits});
        for (const DeviceCount& owner : group.owners) {
            size.allocations += owner.count;
        }
    }
    // Groups come ordered by shape, which orders what is of equal size.
    std::ranges::stable_sort(sizes, std::greater{}, [](const LeakGroupSize& size) {
        return std::tuple{size.allocations, size.bytes()};
    });
    sizes.resize(std::min<std::size_t>(sizes.size(), MEMLEAK_REPORT_MAX));
    return sizes;
}

}  // namespace nimba::smi::exporting
