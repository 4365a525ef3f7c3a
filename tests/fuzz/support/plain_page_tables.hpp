// SPDX-License-Identifier: MIT
// A dump of page tables, read line by line into entries that know each other by their places.
#pragma once

#include "fuzz/support/outcome.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace nimba::fuzz {

inline constexpr std::size_t kPlainLevels = 3;
inline constexpr std::size_t kNowhere = SIZE_MAX;

struct PlainPageTable {
    int32_t index = 0;
    std::string address;
    std::string buffer;
    std::size_t child = kNowhere;      // in the level below
    std::size_t parent = kNowhere;     // in the level above
    std::size_t sub_table = kNowhere;  // in the sub-tables of its level
    std::size_t next = kNowhere;
    std::size_t previous = kNowhere;
};

struct PlainSubTable {
    int32_t index = 0;
    uint16_t snoop = 0;
    uint16_t segment = 0;
    int32_t large_page = 0;
    std::string address;
    std::size_t parent = kNowhere;  // in the page tables of its level
    std::size_t next = kNowhere;
    std::size_t previous = kNowhere;
    int32_t parent_level = 0;
    int32_t parent_index = 0;
};

struct PlainTree {
    std::array<std::vector<PlainPageTable>, kPlainLevels> page_tables;
    std::array<std::vector<PlainSubTable>, kPlainLevels> sub_tables;
};

// Ends at the first number that is none; the entries before it stay.
Outcome build_plainly(std::string_view text, PlainTree& tree);

// Gives each sub-table entry level and index of the entry that owns its run.
void name_owners(PlainTree& tree);

}  // namespace nimba::fuzz
