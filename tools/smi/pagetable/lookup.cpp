// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/lookup.hpp"

#include <algorithm>
#include <iterator>

namespace nimba::smi {
namespace {

using Runs = std::vector<PageRun>;

// The first run that begins behind an address.
Runs::const_iterator run_behind(const Runs& runs, uint64_t address)
{
    return std::ranges::upper_bound(runs, address, {}, &PageRun::address);
}

const PageRun* run_at(const Runs& runs, uint64_t address)
{
    const auto behind = run_behind(runs, address);
    return behind != runs.begin() && std::prev(behind)->range().contains(address)
               ? &*std::prev(behind)
               : nullptr;
}

// What is mapped without a gap up to the end of the last run before `behind`.
std::optional<AddressRange> extent_before(const Runs& runs, Runs::const_iterator behind)
{
    if (behind == runs.begin()) {
        return std::nullopt;
    }
    auto first = std::prev(behind);
    const uint64_t end = first->range().end;
    while (first != runs.begin() && std::prev(first)->range().end == first->address) {
        --first;
    }
    return AddressRange{first->address, end};
}

std::optional<AddressRange> extent_from(const Runs& runs, Runs::const_iterator first)
{
    if (first == runs.end()) {
        return std::nullopt;
    }
    AddressRange extent = first->range();
    for (++first; first != runs.end() && first->address == extent.end; ++first) {
        extent.end = first->range().end;
    }
    return extent;
}

// The page-table entries for an address, down to `lowest` at most.
std::vector<TableEntry> path_to(const AddressSpace& space, uint64_t address, int lowest)
{
    std::vector<TableEntry> path;
    for (int level = 0; level <= lowest; ++level) {
        const auto& tables = space.tables.at(static_cast<std::size_t>(level));
        const uint64_t index = address >> space.split.table_shift(level);
        const auto found = std::ranges::lower_bound(tables, index, {}, &TableEntry::index);
        if (found == tables.end() || found->index != index) {
            break;
        }
        path.push_back(*found);
    }
    return path;
}

MappedPage page_at(const PageRun& run, uint64_t address)
{
    const uint64_t offset = address - run.address;
    const uint64_t number = offset >> run.kind.shift;
    const uint64_t begin = run.address + (number << run.kind.shift);
    return {run.first_index + number,
            {begin, begin + run.kind.page_size()},
            run.kind,
            run.physical ? std::optional(*run.physical + offset) : std::nullopt};
}

}  // namespace

AddressLookup look_up(const ProcessSpace& process, uint64_t address)
{
    const AddressSpace& space = process.space;
    AddressLookup lookup;
    lookup.address = address;
    std::ranges::copy_if(
        process.allocations, std::back_inserter(lookup.allocations),
        [&](const VmAllocation& allocation) { return allocation.range.contains(address); });
    if (const PageRun* const run = run_at(space.runs, address)) {
        lookup.path = path_to(space, address, run->level);
        lookup.page = page_at(*run, address);
    } else {
        const auto behind = run_behind(space.runs, address);
        lookup.path = path_to(space, address, kPageTableLevels - 1);
        lookup.below = extent_before(space.runs, behind);
        lookup.above = extent_from(space.runs, behind);
    }
    return lookup;
}

}  // namespace nimba::smi
