// SPDX-License-Identifier: MIT
#pragma once

#include "nimba_mgmt_interface.h"

#include <string>
#include <vector>

namespace nimba::bench {

// Reads <debug directory>/allocations as one would without a thought of speed: streams, lines,
// string compares down the list of keys. The records are those of get_current_allocation_data
// without a VA driver. Throws std::system_error.
std::vector<_GFX_ALLOCATION_INFO> read_plainly(const std::string& debug_directory);

}  // namespace nimba::bench
