// SPDX-License-Identifier: MIT
// What discovery's answer says about adapters that are not in it.
#pragma once

#include "tools/smi/exit_status.hpp"
#include "tools/smi/process/diagnosis.hpp"
#include "tools/smi/worker/payload.hpp"

#include <vector>

namespace nimba::smi {

// Why adapters are missing, and that there is none when there is none.
std::vector<Problem> discovery_problems(const Discovery& discovery);

// The adapter was there when discovery ran, and its own worker does not find it.
Problem gone_problem(const Subject& subject);

}  // namespace nimba::smi
