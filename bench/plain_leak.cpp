// SPDX-License-Identifier: MIT
#include "bench/plain_leak.hpp"

#include <algorithm>

namespace nimba::bench {
namespace {

bool alike(const _GFX_ALLOCATION_INFO& a, const _GFX_ALLOCATION_INFO& b)
{
    return a.width == b.width && a.height == b.height && a.size == b.size &&
           a.hw_format == b.hw_format && a.at_type == b.at_type;
}

bool same(const _GFX_ALLOCATION_INFO& a, const _GFX_ALLOCATION_INFO& b)
{
    return a.handle == b.handle && alike(a, b);
}

}  // namespace

void merge_plainly(std::vector<_GFX_ALLOCATION_INFO>& snapshot,
                   std::vector<_GFX_ALLOCATION_INFO>& kept)
{
    for (auto record = kept.begin(); record != kept.end();) {
        const auto found =
            std::find_if(snapshot.begin(), snapshot.end(),
                         [&](const _GFX_ALLOCATION_INFO& other) { return same(other, *record); });
        if (found == snapshot.end()) {
            record = kept.erase(record);
        } else {
            ++record->hit_count;
            snapshot.erase(found);
            ++record;
        }
    }
    kept.insert(kept.end(), snapshot.begin(), snapshot.end());
}

std::vector<_GFX_ALLOCATION_INFO> group_plainly(const std::vector<_GFX_ALLOCATION_INFO>& kept)
{
    std::vector<_GFX_ALLOCATION_INFO> groups;
    for (const _GFX_ALLOCATION_INFO& record : kept) {
        const auto group =
            std::find_if(groups.begin(), groups.end(),
                         [&](const _GFX_ALLOCATION_INFO& other) { return alike(other, record); });
        if (group == groups.end()) {
            groups.push_back(record);
        } else {
            ++group->sum_count;
        }
    }
    std::sort(groups.begin(), groups.end(), compare_allo_sum);
    groups.resize(std::min<std::size_t>(groups.size(), MEMLEAK_REPORT_MAX));
    return groups;
}

}  // namespace nimba::bench
