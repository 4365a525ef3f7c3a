// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace nimba::smi {

// How many lines of a preference file are not in `rewritten`, which the library made of it without
// a change: comments, keys that it does not know, values that it cannot read or has no room for.
// White space at the ends of lines and around "=", empty lines and the order do not count.
int lost_lines(std::string_view original, std::string_view rewritten);

}  // namespace nimba::smi
