// SPDX-License-Identifier: MIT
// What is wrong with a command line.
#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <string_view>

namespace nimba::tools {

// As CLI11 tells it; a flag with a value, as --json=3, in words of users.
inline std::string parse_fault(const CLI::Error& error)
{
    constexpr std::string_view kFlagWithValue = " was given a disallowed flag override";
    const std::string_view told = error.what();
    if (!told.ends_with(kFlagWithValue)) {
        return std::string{told};
    }
    const std::string_view name = told.substr(0, told.size() - kFlagWithValue.size());
    return (name.size() == 1 ? "-" : "--") + std::string{name} + " takes no value";
}

}  // namespace nimba::tools
