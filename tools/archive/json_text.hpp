// SPDX-License-Identifier: MIT
#pragma once

#include "tools/archive/limits.hpp"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <string_view>

namespace nimba::archive {

// The value of a record's text. Throws ArchiveError, which begins with `file`, when it is no JSON,
// is nested deeper than any record, or has too many values.
nlohmann::json parse_json(std::string_view text, const char* file,
                          std::size_t most_values = Limits{}.record_values);

}  // namespace nimba::archive
