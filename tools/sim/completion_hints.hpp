// SPDX-License-Identifier: MIT
#pragma once

#include "tools/completion/model.hpp"

namespace nimba::sim {

// What completes the values of nimba-sim's options and arguments.
completion::Hints completion_hints();

}  // namespace nimba::sim
