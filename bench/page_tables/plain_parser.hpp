// SPDX-License-Identifier: MIT
#pragma once

#include "nimba_mgmt_interface.h"

#include <string>

namespace nimba::bench {

// Parses the dump at `path` into a prepared record as one would without a thought of speed: stream,
// lines as strings, each field searched from the front of the line, std::stoi, push_back. The
// entries are those of get_pagetable_info. Throws std::system_error.
void parse_plainly(const std::string& path, data_vectors& device);

}  // namespace nimba::bench
