// SPDX-License-Identifier: MIT
// How the bytes of a fuzzer become names in directories.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace nimba::fuzz {

// "0", "1", and so on, as drivers name entries.
std::vector<std::string> numbered_names(std::size_t count);

// The names that these bytes give, as hostile as a system allows: a NUL becomes a newline, what no
// directory can hold is left out or made different.
std::vector<std::string> names_of(std::span<const std::string_view> texts);

// Takes the first lines of the texts off; they give the names.
std::vector<std::string> take_names(std::span<std::string_view> texts);

}  // namespace nimba::fuzz
