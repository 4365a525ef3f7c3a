// SPDX-License-Identifier: MIT
#pragma once

#include "nimba_mgmt_interface.h"

#include <vector>

namespace nimba::bench {

// compare_memleak_list by searching the snapshot from its first record for every kept record.
void merge_plainly(std::vector<_GFX_ALLOCATION_INFO>& snapshot,
                   std::vector<_GFX_ALLOCATION_INFO>& kept);

// The leak report of the kept list, largest group first, by searching the groups from the first for
// every record. Up to MEMLEAK_REPORT_MAX groups.
std::vector<_GFX_ALLOCATION_INFO> group_plainly(const std::vector<_GFX_ALLOCATION_INFO>& kept);

}  // namespace nimba::bench
