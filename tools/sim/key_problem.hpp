// SPDX-License-Identifier: MIT
// What a message says of a key of a machine file that is not as it should be.
#pragma once

#include <toml++/toml.h>

#include <span>
#include <string>
#include <string_view>

namespace nimba::sim {

// "one of "a", "b", "c"".
std::string one_of(std::span<const std::string_view> choices);

// The text in quotes, on one line.
std::string quoted(const std::string& text);

// Throws a MachineFileError of the form
//   FILE:LINE: key 'adapter[0].card': PROBLEM
// with the line of `place`, where it was read from a file.
[[noreturn]] void fail_key(const std::string& file, const toml::node& place, const std::string& key,
                           const std::string& problem);

// The same, where the problem is that the value is not what was expected:
//   expected a whole number from 0 to 63, got "one"
[[noreturn]] void fail_expected(const std::string& file, const toml::node& value,
                                const std::string& key, const std::string& expected);

}  // namespace nimba::sim
