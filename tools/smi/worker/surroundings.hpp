// SPDX-License-Identifier: MIT
// What a worker arranges around itself before the library is loaded.
#pragma once

#include <string>
#include <string_view>

namespace nimba::smi {

// Has this process end, with its whole process group, when the process at the other end of
// `channel` ends. This process must be the leader of its group. Returns false when that end is
// closed already.
bool end_with_parent(int channel);

// Keeps the standard descriptors clean of what the library and its commands print, which is from
// the moment it is loaded: all of it goes to standard error when `verbose`; else what they write on
// standard output goes nowhere, and standard error becomes the descriptor `complaints`. Standard
// input becomes empty. The directories of system commands are put at the end of PATH, for the
// commands that the library runs.
// Returns 0, or the number of the error that prevented it.
int arrange_surroundings(bool verbose, int complaints);

// `path`, a PATH, with /usr/sbin and /sbin behind it unless it has them.
std::string with_system_directories(std::string_view path);

// The receivers of the library's messages. Both note how far discovery came; the text is shown as
// it is, never read as a format.
int drop_message(const char* text, ...);
int show_message(const char* text, ...);

}  // namespace nimba::smi
