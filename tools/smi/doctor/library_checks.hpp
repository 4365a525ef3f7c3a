// SPDX-License-Identifier: MIT
// The checks of the management library and of what it finds. Pure functions.
#pragma once

#include "tools/smi/doctor/check.hpp"
#include "tools/smi/doctor/facts.hpp"
#include "tools/smi/process/discover.hpp"
#include "tools/smi/worker/payload.hpp"

#include <optional>
#include <span>
#include <vector>

namespace nimba::smi {

// A check whose worker gave no facts: `problem` says why.
Check unanswered_check(std::string id, const Problem& problem);

// The library and its interface version. Without a version `problem` says why there is none.
std::vector<Check> library_checks(const std::optional<LibraryVersion>& version,
                                  const std::optional<Problem>& problem);

// The adapters that the library lists, and each that it does not. `earlier`: the checks of what
// discovery needs. `devices`: absent when they could not be looked at.
std::vector<Check> adapters_checks(const DiscoveryOutcome& outcome, std::span<const Check> earlier,
                                   const std::optional<DeviceFacts>& devices);

// The adapters were not looked for.
Check skipped_adapters(const Check& cause);

}  // namespace nimba::smi
