// SPDX-License-Identifier: MIT
#include "tools/smi/alloc/listing.hpp"

#include <algorithm>
#include <string_view>
#include <tuple>
#include <utility>

namespace nimba::smi {
namespace {

bool is_held_by(const ListedAllocation& row, const AllocationFilter& filter)
{
    if (!filter.pid && !filter.process) {
        return true;
    }
    return std::ranges::any_of(row.processes, [&](const Process& process) {
        return (!filter.pid || process.pid == *filter.pid) &&
               (!filter.process || process.name.find(*filter.process) != std::string::npos);
    });
}

bool is_let_through(const ListedAllocation& row, const AllocationFilter& filter)
{
    const Allocation& allocation = *row.allocation;
    return bytes_of(allocation) >= filter.min_size &&
           (!filter.device || unsigned_bits(allocation.device) == *filter.device) &&
           (!filter.segment || allocation.segmentid == *filter.segment) && is_held_by(row, filter);
}

// Allocations without a known process come first.
int64_t number_of(const ListedAllocation& row, SortKey key)
{
    const Allocation& allocation = *row.allocation;
    switch (key) {
        case SortKey::kSlot:
            return row.adapter->slot;
        case SortKey::kHandle:
            return unsigned_bits(allocation.handle);
        case SortKey::kDevice:
            return unsigned_bits(allocation.device);
        case SortKey::kPid:
            return row.processes.empty() ? -1 : row.processes.front().pid;
        case SortKey::kSize:
            return unsigned_bits(allocation.size);
        case SortKey::kSegment:
            return allocation.segmentid;
        case SortKey::kWidth:
            return allocation.width;
        case SortKey::kHeight:
            return allocation.height;
        case SortKey::kFormat:
            return allocation.hw_format;
        case SortKey::kType:
            return allocation.at_type;
        case SortKey::kProcess:
            break;
    }
    return 0;
}

std::string_view text_of(const ListedAllocation& row, SortKey key)
{
    return key == SortKey::kProcess && !row.processes.empty() ? row.processes.front().name
                                                              : std::string_view{};
}

void sort_rows(std::vector<ListedAllocation>& rows, const SortOrder& order)
{
    std::ranges::sort(rows, {}, [](const ListedAllocation& row) {
        return std::tuple{row.adapter->slot, unsigned_bits(row.allocation->device),
                          unsigned_bits(row.allocation->handle)};
    });
    std::ranges::stable_sort(rows, [&](const ListedAllocation& a, const ListedAllocation& b) {
        const ListedAllocation& smaller = order.descending ? b : a;
        const ListedAllocation& larger = order.descending ? a : b;
        const auto key = [&](const ListedAllocation& row) {
            return std::pair{number_of(row, order.key), text_of(row, order.key)};
        };
        return key(smaller) < key(larger);
    });
}

void count(const ListedAllocation& row, AllocationCount& counter)
{
    ++counter.allocations;
    counter.bytes += bytes_of(*row.allocation);
}

}  // namespace

Listing list_allocations(const MemorySnapshot& snapshot, const AllocOptions& options,
                         const std::optional<std::size_t>& top)
{
    Listing listing;
    for (const AdapterMemory& memory : snapshot.adapters) {
        for (const Allocation& allocation : memory.allocations) {
            const ListedAllocation row{&memory.adapter, &allocation,
                                       memory.owners.of(unsigned_bits(allocation.device))};
            count(row, listing.all);
            if (is_let_through(row, options.filter)) {
                count(row, listing.matched);
                listing.rows.push_back(row);
            }
        }
    }
    sort_rows(listing.rows, options.sort);
    listing.rows.resize(std::min(listing.rows.size(), top.value_or(listing.rows.size())));
    return listing;
}

}  // namespace nimba::smi
