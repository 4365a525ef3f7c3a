// SPDX-License-Identifier: MIT
#include "tools/smi/leaks/history.hpp"

#include <algorithm>
#include <functional>
#include <tuple>

namespace nimba::smi {
namespace {

int64_t difference(uint64_t now, uint64_t before)
{
    return static_cast<int64_t>(now) - static_cast<int64_t>(before);
}

}  // namespace

void AdapterHistory::add(const LeakReading& reading)
{
    if (snapshots_ == 0) {
        for (const LeakGroup& group : reading.groups) {
            for (const DeviceCount& owner : group.owners) {
                first_[group.shape][owner.device] = owner.count;
            }
        }
    }
    ++snapshots_;
    last_ = reading.groups;
    owners_.learn(reading.contexts);
}

std::vector<GroupGrowth> AdapterHistory::groups() const
{
    std::vector<GroupGrowth> groups;
    groups.reserve(last_.size());
    for (const LeakGroup& group : last_) {
        groups.push_back(growth_of(group));
    }
    std::ranges::stable_sort(groups, std::greater{}, [](const GroupGrowth& group) {
        return std::tuple{group.change, group.bytes()};
    });
    return groups;
}

GroupGrowth AdapterHistory::growth_of(const LeakGroup& group) const
{
    GroupGrowth growth{group.shape, 0, 0, group.oldest_hits, {}};
    const auto known = first_.find(group.shape);
    Counts before = known == first_.end() ? Counts{} : known->second;
    for (const auto& [device, count] : before) {
        growth.change -= difference(count, 0);
    }
    for (const DeviceCount& owner : group.owners) {
        const auto processes = owners_.of(owner.device);
        growth.count += owner.count;
        growth.owners.push_back({owner.device,
                                 owner.count,
                                 difference(owner.count, before[owner.device]),
                                 {processes.begin(), processes.end()}});
    }
    growth.change += difference(growth.count, 0);
    std::ranges::stable_sort(growth.owners, std::greater{}, [](const GroupOwner& owner) {
        return std::tuple{owner.change, owner.count};
    });
    return growth;
}

}  // namespace nimba::smi
