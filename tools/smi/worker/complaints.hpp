// SPDX-License-Identifier: MIT
// What a worker writes on standard error, in memory that it shares with its parent: a library that
// ends the process says there why.
#pragma once

#include "tools/descriptor.hpp"

#include <string>

namespace nimba::smi {

// New memory for complaints, written like a file that is appended to. No descriptor when there is
// none; errno tells why.
tools::Descriptor make_complaint_memory();

// Forgets what was written into the memory so far, so that what is there belongs to one call.
void forget_complaints(int memory);

// The last line in the memory, at most 300 bytes of it; empty when nothing was written.
std::string last_line_in(int memory);

}  // namespace nimba::smi
