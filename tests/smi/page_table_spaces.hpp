// SPDX-License-Identifier: MIT
// Page-table records and address spaces for the tests of "pagetable".
#pragma once

#include "tools/smi/pagetable/process_space.hpp"

#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace nimba::smi {

inline TableRecord table(int32_t level, int32_t index, std::string address = "10000000")
{
    return {level, index, std::move(address), "pt" + std::to_string(level)};
}

// A page of 4 KiB, below an entry of level 2.
inline PageRecord page(int32_t table_index, int32_t index, std::string address,
                       uint16_t segment = 0, uint16_t snoop = 0)
{
    return {2, index, 2, table_index, 0, snoop, segment, std::move(address)};
}

inline AddressSpace space_with(std::initializer_list<TableRecord> tables,
                               const std::vector<PageRecord>& pages)
{
    AddressSpaceBuilder builder{AddressSplit{}};
    for (const TableRecord& record : tables) {
        builder.add(record);
    }
    for (const PageRecord& record : pages) {
        builder.add(record);
    }
    return builder.finish();
}

// A viewer with the tables for 0x100000000 to 0x1001fffff.
inline ProcessSpace viewer(const std::vector<PageRecord>& pages)
{
    ProcessSpace process;
    process.device = {0, "4100001", "viewer", {1, 1, 1}, {0, 0, pages.size()}};
    process.title = "process 4100001 (viewer)";
    process.space =
        space_with({table(0, 0), table(1, 4, "10001000"), table(2, 2048, "10002000")}, pages);
    return process;
}

}  // namespace nimba::smi
