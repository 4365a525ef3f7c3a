// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/exit_status.hpp"
#include "tools/smi/options.hpp"

#include <vector>

namespace nimba::smi {

// Writes all entries to `fd` while they are asked for, so that no more than a block of them is held
// however many there are. When it has to stop on the way, a JSON document is left without its end.
// Returns what went wrong.
std::vector<Problem> stream_entries(const Options& options, int fd);

}  // namespace nimba::smi
