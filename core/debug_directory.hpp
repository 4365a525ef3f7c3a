// SPDX-License-Identifier: MIT
#pragma once

#include "core/handles.hpp"

namespace nimba {

// Opens the directory `name` of the current adapter's debug directory. Empty when it cannot be
// opened.
Directory open_debug_directory(const char* name);

}  // namespace nimba
