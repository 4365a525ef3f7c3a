// SPDX-License-Identifier: MIT
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace nimba::completion {

struct Filling {
    std::string_view mark;  // "@tool@"
    std::string_view text;
};

// The text with every mark in it replaced. What was filled in is not searched for marks again.
std::string fill(std::string_view text, std::initializer_list<Filling> fillings);

// The tool's name as the name of a shell function: "nimba_smi".
std::string function_name(std::string_view tool);

// One word of a POSIX shell, between single quotes where it needs them.
std::string quoted(std::string_view text);

}  // namespace nimba::completion
