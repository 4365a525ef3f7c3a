// SPDX-License-Identifier: MIT
#pragma once

#include "bench/measurement.hpp"
#include "bench/page_tables/dump_tree.hpp"

#include <vector>

namespace nimba::bench {

namespace name {
inline constexpr char kExport[] = "get_pagetable_data with a buffer";
inline constexpr char kRecordCopy[] = "memcpy of 48 bytes a record";
inline constexpr char kDigits[] = "plain: the addresses' digits by a table";
}  // namespace name

// Has the library read the page tables of the tree and keep them, and copies them out. The kept
// list stays as it is as long as the cases are used. Throws std::runtime_error unless the records
// have the addresses that the plain conversion tells.
std::vector<Case> export_cases(const DumpTree& tree);

}  // namespace nimba::bench
