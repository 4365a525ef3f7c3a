// SPDX-License-Identifier: MIT
// What the library tells of page tables, and how it travels to the tool: in blocks, since there may
// be a million entries. Texts are the driver's own.
#pragma once

#include "tools/smi/pagetable/split.hpp"
#include "tools/smi/worker/payload_value.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace nimba::smi {

// Records in one answer at most.
inline constexpr std::size_t kRecordsInBlock = 4096;

// One entry of a page table.
struct TableRecord {
    int32_t level = 0;
    int32_t index = 0;
    std::string address;  // of the table
    std::string buffer;   // that the table is in

    bool operator==(const TableRecord&) const = default;
};

// One entry of a sub-table: a page.
struct PageRecord {
    int32_t level = 0;
    int32_t index = 0;
    int32_t parent_level = 0;  // the page-table entry that the sub-table belongs to
    int32_t parent_index = 0;
    int32_t large_page = 0;
    uint16_t snoop = 0;
    uint16_t segment = 0;
    std::string address;

    bool operator==(const PageRecord&) const = default;
};

// One allocation in the address space of a process.
struct VmAllocationRecord {
    std::string pid;
    std::string handle;
    std::string address;
    std::string size;

    bool operator==(const VmAllocationRecord&) const = default;
};

using LevelCounts = std::array<uint64_t, kPageTableLevels>;

// The address space of a process.
struct VmDevice {
    std::size_t number = 0;  // that requests name it by
    std::string pid;
    std::string name;  // of the process; empty when it has gone
    LevelCounts tables{};
    LevelCounts pages{};

    bool operator==(const VmDevice&) const = default;
};

// Answer to "pagetables": what there is.
struct PageTableContents {
    std::vector<VmDevice> devices;
    uint64_t allocations = 0;

    bool operator==(const PageTableContents&) const = default;
};

// Answers with a block of records.
template <typename Record>
struct Block {
    std::vector<Record> records;

    bool operator==(const Block&) const = default;
};

}  // namespace nimba::smi
