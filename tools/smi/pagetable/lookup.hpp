// SPDX-License-Identifier: MIT
// What an address space says about one address.
#pragma once

#include "tools/smi/pagetable/process_space.hpp"

#include <cstdint>
#include <optional>
#include <vector>

namespace nimba::smi {

// The page that maps an address.
struct MappedPage {
    uint64_t index = 0;  // in its sub-table
    AddressRange range;
    PageKind kind;
    std::optional<uint64_t> physical;  // address of the very byte

    bool operator==(const MappedPage&) const = default;
};

struct AddressLookup {
    uint64_t address = 0;
    std::vector<TableEntry> path;  // page-table entries from the root to the page or to where it
                                   // ends
    std::optional<MappedPage> page;
    std::optional<AddressRange> below;  // without a page: what is mapped next to the address
    std::optional<AddressRange> above;
    std::vector<VmAllocation> allocations;  // that the address is in
};

AddressLookup look_up(const ProcessSpace& process, uint64_t address);

}  // namespace nimba::smi
