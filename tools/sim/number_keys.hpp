// SPDX-License-Identifier: MIT
// Tables of a machine file that hold little but numbers.
#pragma once

#include "toml_table.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace nimba::sim {

// A key with a number of a Description.
template <typename Description>
struct NumberKey {
    std::string_view name;
    int64_t Description::*value;
    int64_t least;
    int64_t greatest;
};

// The names of the keys, and `further` names.
template <typename Key, std::size_t Count, std::size_t Further = 0>
constexpr std::array<std::string_view, Count + Further> names_of(
    const std::array<Key, Count>& keys, const std::array<std::string_view, Further>& further = {})
{
    std::array<std::string_view, Count + Further> names{};
    auto* name = names.begin();
    for (const auto& key : keys) {
        *name++ = key.name;
    }
    for (const auto& key : further) {
        *name++ = key;
    }
    return names;
}

// Reads those of the keys that are there.
template <typename Description, std::size_t Count>
void read_numbers(const TableReader& table, const std::array<NumberKey<Description>, Count>& keys,
                  Description& description)
{
    for (const auto& [name, value, least, greatest] : keys) {
        description.*value = table.integer_or(name, least, greatest, description.*value);
    }
}

}  // namespace nimba::sim
