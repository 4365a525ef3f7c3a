// SPDX-License-Identifier: MIT
// What a worker arranges around itself before the library is loaded.
#pragma once

#include <string>
#include <string_view>

namespace nimba::smi {

// Has the kernel kill this process when the process at the other end of `channel` ends.
// Returns false when that end is closed already.
bool end_with_parent(int channel);

// Keeps standard output clean: it goes to standard error when `verbose`, else nowhere, since the
// library prints there from the moment it is loaded. Standard input becomes empty. The directories
// of system commands are put at the end of PATH, for the commands that the library runs.
// Returns 0, or the number of the error that prevented it.
int arrange_surroundings(bool verbose);

// `path`, a PATH, with /usr/sbin and /sbin behind it unless it has them.
std::string with_system_directories(std::string_view path);

// The receivers of the library's messages. The text is shown as it is, never read as a format.
int drop_message(const char* text, ...);
int show_message(const char* text, ...);

}  // namespace nimba::smi
