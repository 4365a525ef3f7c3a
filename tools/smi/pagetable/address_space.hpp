// SPDX-License-Identifier: MIT
// The address space of a process as its page tables lay it out: the model that every face of
// "pagetable" renders. Made from records that may be nonsense.
#pragma once

#include "tools/smi/pagetable/record.hpp"
#include "tools/smi/pagetable/split.hpp"

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace nimba::smi {

// A page-table entry.
struct TableEntry {
    int level = 0;
    uint64_t index = 0;
    AddressRange range;   // that it stands for
    std::string address;  // of its table, as the driver tells it
    std::string buffer;

    bool operator==(const TableEntry&) const = default;
};

// What a page is like, besides where it is.
struct PageKind {
    unsigned shift = 0;  // its size is 1 << shift
    uint16_t segment = 0;
    bool snooped = false;

    [[nodiscard]] uint64_t page_size() const { return uint64_t{1} << shift; }

    auto operator<=>(const PageKind&) const = default;
};

// Like pages of one sub-table, one behind the other in both address spaces.
struct PageRun {
    int level = 0;  // of the page-table entry that the sub-table belongs to
    uint64_t table_index = 0;
    uint64_t first_index = 0;  // of the first page, in the sub-table
    uint64_t address = 0;
    uint64_t pages = 0;
    PageKind kind;
    std::optional<uint64_t> physical;  // of the first page; a page without is a run of its own

    [[nodiscard]] AddressRange range() const
    {
        return {address, address + pages * kind.page_size()};
    }

    bool operator==(const PageRun&) const = default;
};

// Entries that are left out.
struct Oddities {
    uint64_t outside = 0;   // with a level or an index that the address space has not
    uint64_t orphans = 0;   // below a page-table entry that is not listed
    uint64_t repeated = 0;  // for addresses that another entry stands for

    bool operator==(const Oddities&) const = default;
};

struct AddressSpace {
    AddressSplit split;
    std::array<std::vector<TableEntry>, kPageTableLevels> tables;  // by index
    std::vector<PageRun> runs;                                     // by address; no two overlap
    std::map<uint64_t, std::string> unreadable;  // by address, the texts of physical addresses that
                                                 // are no hexadecimal number
    Oddities odd;
};

class AddressSpaceBuilder final {
  public:
    explicit AddressSpaceBuilder(const AddressSplit& split) { space_.split = split; }

    void add(const TableRecord& record);
    void add(const PageRecord& record);

    // The address space of all that was added; the builder is spent then.
    [[nodiscard]] AddressSpace finish();

  private:
    AddressSpace space_;
};

// The addresses of a page; nothing for a record that makes no sense.
std::optional<AddressRange> place_of(const AddressSplit& split, const PageRecord& record);

// The runs, in a space, of the sub-table below a page-table entry.
std::vector<PageRun> runs_of(const AddressSpace& space, const TableEntry& table);

// The page-table entries of the next level below one; none below level 2.
std::span<const TableEntry> tables_below(const AddressSpace& space, const TableEntry& table);

// An allocation in an address space.
struct VmAllocation {
    std::string handle;  // as the driver tells it
    AddressRange range;

    bool operator==(const VmAllocation&) const = default;
};

// Nothing when the address or the size is no number, or the end is beyond 64 bits.
std::optional<VmAllocation> allocation_of(const VmAllocationRecord& record);

}  // namespace nimba::smi
