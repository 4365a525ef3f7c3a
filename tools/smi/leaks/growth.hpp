// SPDX-License-Identifier: MIT
// Growth that is a reason to fail.
#pragma once

#include "tools/smi/exit_status.hpp"
#include "tools/smi/leaks/result.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace nimba::smi {

// A problem for each adapter on which a group grew by `limit` allocations or more; it names the one
// that grew most, with its owners.
std::vector<Problem> growth_problems(const LeaksResult& result, uint64_t limit);

// The problem of a run that ended before there was anything to compare, when nothing else was in
// its way: it must not pass for one without growth.
std::optional<Problem> too_short_problem(const LeaksResult& result);

// "128x64, 32 KiB, format 28, type 1"
std::string shape_text(const Shape& shape);

// "/usr/games/maze (4100003), device 0x11 and 2 more": those that grew most first.
std::string owners_text(const std::vector<GroupOwner>& owners);

}  // namespace nimba::smi
