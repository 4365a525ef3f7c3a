// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/exit_status.hpp"

#include <vector>

namespace nimba::smi {

// Adds a problem of one of the questions behind a snapshot, unless an answer to an earlier one has
// told of it: in the same words, whatever was being called, or of the same file or library.
void add_unless_told(std::vector<Problem>& problems, const Problem& problem);

}  // namespace nimba::smi
