// SPDX-License-Identifier: MIT
#pragma once

#include "tools/descriptor.hpp"

#include <string_view>

namespace nimba::bench {

// Takes standard output for the program's results: from now on, what the library writes there goes
// to standard error, and so does its line at unloading. Its line at loading is dropped where it is
// still in the buffer, as it is unless standard output is a terminal. Throws std::system_error.
tools::Descriptor claim_standard_output();

// Writes all of `text`. Throws std::system_error.
void write_text(const tools::Descriptor& output, std::string_view text);

}  // namespace nimba::bench
