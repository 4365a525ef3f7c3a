// SPDX-License-Identifier: MIT
#pragma once

#include "tools/completion/model.hpp"

namespace nimba::smi {

// The group of the overview's options: behind a command they are the command's, or nothing.
inline constexpr const char* kOverviewGroup = "Options of the overview";

// What completes the values of nimba-smi's options and arguments. Nothing asks a driver: it may
// block, and a shell waits for its completion.
completion::Hints completion_hints();

}  // namespace nimba::smi
