// SPDX-License-Identifier: MIT
#pragma once

#include "bench/measurement.hpp"
#include "bench/page_tables/dump_tree.hpp"

#include <vector>

namespace nimba::bench {

// Names of cases, as the samples and the table have them.
namespace name {
inline constexpr char kBareDumps[] = "bare: read, memchr, bytes of the records";
inline constexpr char kPlainDumps[] = "plain: fgets, find, stoi, push_back";
inline constexpr char kPlainReused[] = "plain, the record reused";
inline constexpr char kParser[] = "get_pagetable_info";
inline constexpr char kParserReused[] = "get_pagetable_info, the record reused";
inline constexpr char kCollection[] = "get_PageTable_data less get_AppName_info";
inline constexpr char kCollectionAndPs[] = "get_PageTable_data with the system's ps";
}  // namespace name

// Throws std::runtime_error unless the bare, the plain and the library's way read the same of the
// tree, the latter two the same entries with the same links.
void check_dumps(const DumpTree& tree);

// Every way to read one tree. The tree must outlive the cases.
std::vector<Case> dump_cases(const DumpTree& tree);

// The parser and the collection alone, to see how they grow.
std::vector<Case> dump_growth_cases(const DumpTree& tree);

}  // namespace nimba::bench
