// SPDX-License-Identifier: MIT
// The faces of "pagetable --tree".
#pragma once

#include "tools/smi/pagetable/process_space.hpp"
#include "tools/smi/text/document.hpp"

#include <span>
#include <string>

namespace nimba::smi {

// The page tables as a tree down to `depth`: 0 shows the entries of level 0, kDepthOfPages all.
std::string tree_text(std::span<const ProcessSpace> processes, int depth);

// The document "nimba-smi.pagetable-tree.1".
std::string tree_json(const AddressSplit& split, std::span<const ProcessSpace> processes, int depth,
                      std::span<const Problem> problems);

// "level 2  index 2048  0x100000000-0x1001fffff  table 0x10002000  buffer pt2_2048", as printable
// as the driver's texts are.
std::string table_text(const TableEntry& table);

// The table as an object, without what is below it.
Document json_table(const TableEntry& table);

}  // namespace nimba::smi
