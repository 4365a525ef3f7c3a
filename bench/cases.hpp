// SPDX-License-Identifier: MIT
#pragma once

#include "bench/allocation_tree.hpp"
#include "bench/measurement.hpp"

#include <vector>

namespace nimba::bench {

// Names of cases, as the samples and the table have them.
namespace name {
inline constexpr char kBare[] = "bare: readdir, openat, read, close";
inline constexpr char kPlain[] = "plain: fopen, getline, compares, strtol";
inline constexpr char kReader[] = "get_current_allocation_data";
inline constexpr char kRawList[] = "get_allocation_raw_list, page 0";
inline constexpr char kLaterPage[] = "get_allocation_raw_list, a later page";
inline constexpr char kCopy[] = "memcpy of 1,840 bytes";
inline constexpr char kSummary[] = "get_device_allocation_summary";
inline constexpr char kWideSummary[] = "get_device_allocation_summary_ext1";
inline constexpr char kLeakQuery[] = "get_memleak_info";
inline constexpr char kMergeAndGrouping[] = "get_memleak_info less the reading";
inline constexpr char kMerge[] = "compare_memleak_list";
inline constexpr char kPlainLeaks[] = "plain: merge and grouping by search";
}  // namespace name

// Up to this many allocations the plain merge and grouping, which is quadratic, is measured.
inline constexpr int kPlainLeaksMax = 10'000;

// Throws std::runtime_error unless the bare, the plain and the library's way read the same of the
// tree, and the plain and the library's leak report of it tell the same sizes of groups.
void check_tree(const AllocationTree& tree);

// Every query over one tree.
std::vector<Case> query_cases(const AllocationTree& tree);

// Reading, leak query, its merge and grouping, and the merge alone over snapshots of one tree (when
// `other` is it) or of the two in turn. The trees must outlive the cases.
std::vector<Case> leak_cases(const AllocationTree& tree, const AllocationTree& other);

}  // namespace nimba::bench
