// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace nimba {

// The shell command that writes the name of a process. A process id that is not decimal digits
// alone becomes one quoted word of it: it comes from the driver, and could be anything.
std::string process_command(std::string_view pid);

}  // namespace nimba
