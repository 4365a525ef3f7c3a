// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/address_space.hpp"

#include "tools/smi/pagetable/number.hpp"

#include <algorithm>
#include <limits>
#include <utility>

namespace nimba::smi {
namespace {

constexpr std::size_t kLowestLevel = kPageTableLevels - 1;

bool continues(const PageRun& run, const PageRun& page)
{
    const uint64_t pages = run.pages;
    return run.physical && page.physical && run.level == page.level &&
           run.table_index == page.table_index && run.kind == page.kind &&
           run.first_index + pages == page.first_index &&
           *run.physical + pages * run.kind.page_size() == *page.physical;
}

const TableEntry* find_table(const AddressSpace& space, std::size_t level, uint64_t index)
{
    const auto& tables = space.tables.at(level);
    const auto found = std::ranges::lower_bound(tables, index, {}, &TableEntry::index);
    return found != tables.end() && found->index == index ? &*found : nullptr;
}

// Of entries with one index the first stays.
void drop_repeated_tables(AddressSpace& space)
{
    for (auto& tables : space.tables) {
        std::ranges::stable_sort(tables, {}, &TableEntry::index);
        const auto kept = std::unique(
            tables.begin(), tables.end(),
            [](const TableEntry& a, const TableEntry& b) { return a.index == b.index; });
        space.odd.repeated += static_cast<uint64_t>(tables.end() - kept);
        tables.erase(kept, tables.end());
    }
}

void drop_orphaned_tables(AddressSpace& space)
{
    for (std::size_t level = 1; level <= kLowestLevel; ++level) {
        const unsigned bits = space.split.bits().at(level);
        space.odd.orphans += std::erase_if(space.tables.at(level), [&](const TableEntry& table) {
            return find_table(space, level - 1, table.index >> bits) == nullptr;
        });
    }
}

void drop_orphaned_runs(AddressSpace& space)
{
    std::erase_if(space.runs, [&](const PageRun& run) {
        const auto level = static_cast<std::size_t>(run.level);
        const bool orphan = find_table(space, level, run.table_index) == nullptr;
        space.odd.orphans += orphan ? run.pages : 0;
        return orphan;
    });
}

// Takes from the beginning of a run what lies before `address`, whole pages. Returns their number.
uint64_t drop_before(PageRun& run, uint64_t address)
{
    if (address <= run.address) {
        return 0;
    }
    const uint64_t size = run.kind.page_size();
    const uint64_t covered = (address - run.address - 1) / size + 1;
    const uint64_t dropped = std::min(run.pages, covered);
    run.address += dropped * size;
    run.first_index += dropped;
    run.pages -= dropped;
    if (run.physical) {
        *run.physical += dropped * size;
    }
    return dropped;
}

// Of pages at one address the one that begins first stays, or was told first.
void drop_overlaps(AddressSpace& space)
{
    std::ranges::stable_sort(space.runs, {}, &PageRun::address);
    uint64_t covered = 0;
    for (PageRun& run : space.runs) {
        space.odd.repeated += drop_before(run, covered);
        covered = std::max(covered, run.range().end);
    }
    std::erase_if(space.runs, [](const PageRun& run) { return run.pages == 0; });
}

}  // namespace

void AddressSpaceBuilder::add(const TableRecord& record)
{
    const auto range = space_.split.table_range(record.level, record.index);
    if (!range) {
        ++space_.odd.outside;
        return;
    }
    space_.tables.at(static_cast<std::size_t>(record.level))
        .push_back({record.level, static_cast<uint64_t>(record.index), *range, record.address,
                    record.buffer});
}

void AddressSpaceBuilder::add(const PageRecord& record)
{
    const auto range = place_of(space_.split, record);
    if (!range) {
        ++space_.odd.outside;
        return;
    }
    const PageKind kind{space_.split.page_shift(record.level, record.large_page != 0),
                        record.segment, record.snoop != 0};
    const PageRun page{record.level,
                       static_cast<uint64_t>(record.parent_index),
                       static_cast<uint64_t>(record.index),
                       range->begin,
                       1,
                       kind,
                       hexadecimal_in(record.address)};
    if (!page.physical) {
        space_.unreadable.emplace(page.address, record.address);
    }
    if (!space_.runs.empty() && continues(space_.runs.back(), page)) {
        ++space_.runs.back().pages;
    } else {
        space_.runs.push_back(page);
    }
}

AddressSpace AddressSpaceBuilder::finish()
{
    drop_repeated_tables(space_);
    drop_orphaned_tables(space_);
    drop_orphaned_runs(space_);
    drop_overlaps(space_);
    return std::move(space_);
}

std::optional<AddressRange> place_of(const AddressSplit& split, const PageRecord& record)
{
    return record.level == record.parent_level
               ? split.page_range(record.level, record.parent_index, record.index,
                                  record.large_page != 0)
               : std::nullopt;
}

std::vector<PageRun> runs_of(const AddressSpace& space, const TableEntry& table)
{
    std::vector<PageRun> runs;
    auto run = std::ranges::lower_bound(space.runs, table.range.begin, {}, &PageRun::address);
    for (; run != space.runs.end() && run->address < table.range.end; ++run) {
        if (run->level == table.level) {
            runs.push_back(*run);
        }
    }
    return runs;
}

std::span<const TableEntry> tables_below(const AddressSpace& space, const TableEntry& table)
{
    const std::size_t level = static_cast<std::size_t>(table.level) + 1;
    if (level > kLowestLevel) {
        return {};
    }
    const auto& tables = space.tables.at(level);
    const unsigned bits = space.split.bits().at(level);
    const auto begin =
        std::ranges::lower_bound(tables, table.index << bits, {}, &TableEntry::index);
    const auto end =
        std::ranges::lower_bound(tables, (table.index + 1) << bits, {}, &TableEntry::index);
    return {begin, end};
}

std::optional<VmAllocation> allocation_of(const VmAllocationRecord& record)
{
    const auto address = hexadecimal_in(record.address);
    const auto size = hexadecimal_in(record.size);
    if (!address || !size || *size > std::numeric_limits<uint64_t>::max() - *address) {
        return std::nullopt;
    }
    return VmAllocation{record.handle, {*address, *address + *size}};
}

}  // namespace nimba::smi
