// SPDX-License-Identifier: MIT
// The places of the machine that the library knows by absolute paths, and the commands that it
// runs.
#pragma once

#include <string>

namespace nimba::fuzz {

// What is opened at `path`, or below it, is opened at `instead`, or below that. The last word on a
// path counts.
void redirect(const std::string& path, const std::string& instead);

// Every process's command line is the file's; of processes with an odd number there is none.
void redirect_command_lines(const std::string& file);

// What every command writes is the file's text. Until then no command can be started.
void redirect_commands(const std::string& file);

}  // namespace nimba::fuzz
