// SPDX-License-Identifier: MIT
// The lines of a page-table dump.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace nimba {

// Views of the line that they were taken from.
struct PageTableLine {
    int32_t level = 0;
    int32_t index = 0;
    std::string_view address;
    std::string_view buffer;
};

struct SubTableLine {
    int32_t level = 0;
    int32_t index = 0;
    int32_t snoop = 0;
    int32_t segment = 0;
    std::optional<int32_t> large_page;  // nothing: the line does not say
    std::string_view address;
};

enum class LineKind { kPageTable, kSubTable, kOther };

LineKind kind_of(std::string_view line);

// Both take a line of their kind. They throw what std::stoi throws of a number.
PageTableLine parse_page_table_line(std::string_view line);
SubTableLine parse_sub_table_line(std::string_view line);

// How far beyond its beginning a plain line is looked at, whatever stands there.
inline constexpr std::size_t kPlainLineLookAhead = 96;

// Reads a line as drivers print sub-table entries, with small numbers and nothing else in it:
// "2:17 Snoop:1 Segment:0 LargePage:0 Addr:1a2b3000" and a newline. Returns its length, that
// included; 0 when it is any other line, which says nothing about it.
std::size_t parse_plain_sub_table_line(const char* text, SubTableLine& fields);

// The parts of a line that more than one node has.
std::string_view without_trailing_blanks(std::string_view text);
std::string_view process_id_in(std::string_view line);

}  // namespace nimba
