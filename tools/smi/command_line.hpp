// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/command.hpp"
#include "tools/smi/options.hpp"

#include <span>
#include <string>
#include <variant>

namespace nimba::smi {

// The group of commands with which the help lists those that explain the tool.
inline constexpr const char* kHelpGroup = "Get help";

struct Invocation {
    const Command* command = nullptr;
    Options options;
};

// The command line asks for a text instead of a command: --help, --version.
struct PrintText {
    std::string text;
};

// The command line makes no sense; what is wrong with it, in one line.
struct UsageError {
    std::string message;
};

using ParsedCommandLine = std::variant<Invocation, PrintText, UsageError>;

// Reads the arguments, the program's name first. The result points into `commands`. The options of
// the command without a name go with no other.
ParsedCommandLine parse_command_line(int count, const char* const* arguments,
                                     std::span<const Command> commands);

}  // namespace nimba::smi
