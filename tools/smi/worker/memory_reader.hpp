// SPDX-License-Identifier: MIT
// The library's calls about video memory, for the session's current adapter.
#pragma once

#include "tools/smi/memory/reading.hpp"
#include "tools/smi/worker/session.hpp"

#include <string>
#include <variant>
#include <vector>

namespace nimba::smi {

// Every allocation once, from all pages of the raw list, or why there is none.
std::variant<std::vector<Allocation>, Failure> read_allocations(Session& session,
                                                                const std::string& debug_directory);

// Takes a snapshot with the library's leak detector. Every allocation once, with the snapshots in a
// row that held it, or why there is no new snapshot.
std::variant<std::vector<Allocation>, Failure> read_leaks(Session& session,
                                                          const std::string& debug_directory);

// Puts the device contexts into `reading`, and into its remarks what keeps them from being all.
void read_contexts(Session& session, const std::string& debug_directory, ReadingBase& reading);

}  // namespace nimba::smi
