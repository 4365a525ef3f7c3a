// SPDX-License-Identifier: MIT
// The text form of GPU preferences.
#pragma once

#include "nimba_mgmt_interface.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace nimba {

// What a written file begins with.
inline constexpr std::string_view kPreferenceHeader = "; wmt_gfx_util.ini\n\n";

// `text` without white space (space and \t \n \v \f \r) at both ends.
std::string_view trimmed(std::string_view text);

// The text that begins at byte `offset` of a record. One that fills its field runs on into the
// fields behind it, to the first NUL or the record's end: the file and the log show it like that.
std::string_view running_text(const _UTIL_GPU_PREFERENCE_NODE& node, std::size_t offset);

// One record as it stands in the file.
std::string preference_section(const _UTIL_GPU_PREFERENCE_NODE& node);

// What a line means, as far as parsing has to tell apart.
enum class LineKind {
    kIgnored,
    kSection,  // `name` holds the text between the brackets
    kValue,    // `name` and `value` hold the trimmed key and value
};

struct PreferenceLine {
    LineKind kind = LineKind::kIgnored;
    std::string_view name;
    std::string_view value;
};

// Takes one line of the file apart; comments and white space at its ends do not count.
PreferenceLine read_preference_line(std::string_view line);

void set_file_name(_UTIL_GPU_PREFERENCE_NODE& node, std::string_view name);

// Stores the value of one key. Unknown keys, and values that do not scan, change nothing; a bus id
// that scans in part stores the parts that were scanned.
void set_preference_value(_UTIL_GPU_PREFERENCE_NODE& node, std::string_view key,
                          std::string_view value);

}  // namespace nimba
