// SPDX-License-Identifier: MIT
#include "alloc/leak_report.hpp"

#include "alloc/record_keys.hpp"

#include <algorithm>
#include <functional>

namespace nimba {
namespace {

struct Group {
    const _GFX_ALLOCATION_INFO* first;
    int32_t sum_count;

    [[nodiscard]] _GFX_ALLOCATION_INFO record() const
    {
        _GFX_ALLOCATION_INFO record = *first;
        record.sum_count = sum_count;
        return record;
    }
};

// In the order in which they are first met.
std::vector<Group> group_by_shape(std::span<const _GFX_ALLOCATION_INFO> kept)
{
    RecordKeys<kShape> shapes{kept.size()};
    std::vector<Group> groups;
    for (const _GFX_ALLOCATION_INFO& record : kept) {
        const uint32_t shape = shapes.number_of(record);
        if (shape == groups.size()) {
            groups.push_back({&record, record.sum_count});
        } else {
            ++groups[shape].sum_count;
        }
    }
    return groups;
}

bool is_larger(const Group& a, const Group& b)
{
    return a.sum_count != b.sum_count ? a.sum_count > b.sum_count : a.first < b.first;
}

}  // namespace

_GFX_MEMLEAK_INFO report_leaks(std::span<const _GFX_ALLOCATION_INFO> kept)
{
    std::vector<Group> groups = group_by_shape(kept);
    const auto reported = std::min<std::size_t>(groups.size(), MEMLEAK_REPORT_MAX);
    const auto end = groups.begin() + static_cast<std::ptrdiff_t>(reported);
    std::partial_sort(groups.begin(), end, groups.end(), is_larger);

    _GFX_MEMLEAK_INFO report{};
    std::transform(groups.begin(), end, report.groups, std::mem_fn(&Group::record));
    return report;
}

}  // namespace nimba

bool compare_allo_sum(const _GFX_ALLOCATION_INFO& a, const _GFX_ALLOCATION_INFO& b)
{
    return a.sum_count > b.sum_count;
}
