// SPDX-License-Identifier: MIT
#include "driver/address_space.hpp"

#include "driver/page_table_text.hpp"

#include <algorithm>
#include <iterator>

namespace nimba::sim {
namespace {

constexpr uint64_t kPages = kAddressEnd / kPageSize;

}  // namespace

void AddressSpace::map(const Mapping& mapping)
{
    if (mapping.size == 0) {
        return;
    }
    const uint64_t first = mapping.address / kPageSize;
    const uint64_t end =
        std::min((mapping.address + mapping.size + kPageSize - 1) / kPageSize, kPages);
    auto next = parts_.upper_bound(first);
    if (next != parts_.begin() && std::prev(next)->second.run.end > first) {
        --next;
    }
    // Fills each gap between the parts that are there.
    for (uint64_t begin = first; begin < end; ++next) {
        const uint64_t gap_end = next == parts_.end() ? end : std::min(end, next->first);
        if (begin < gap_end) {
            const uint64_t physical = mapping.physical + (begin - first) * kPageSize;
            parts_.emplace_hint(
                next, begin,
                Part{{begin, gap_end, physical, mapping.segment, mapping.snoop}, true});
        }
        if (next == parts_.end()) {
            return;
        }
        begin = next->second.run.end;
    }
}

void AddressSpace::reserve(uint64_t begin, uint64_t end)
{
    parts_.insert_or_assign(begin, Part{{begin, end, 0, 0, false}, false});
}

std::vector<PageRun> AddressSpace::runs() const
{
    std::vector<PageRun> runs;
    for (const auto& [begin, part] : parts_) {
        if (part.mapped) {
            runs.push_back(part.run);
        }
    }
    return runs;
}

}  // namespace nimba::sim
