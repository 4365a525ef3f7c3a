// SPDX-License-Identifier: MIT
// Which texts of a record can be the names that they stand for.
#pragma once

#include "tools/archive/capture.hpp"

#include <string_view>

namespace nimba::archive {

inline constexpr int kGreatestCard = 1023;

// Without control characters, in UTF-8.
bool is_line(std::string_view text);

// "EACCES", "deadline"
bool is_error_name(std::string_view text);

// "0000:01:00.0"
bool is_bus_id(std::string_view text);

// "/dev/dri/renderD128", of that type.
bool is_drm_node_path(DrmNodeType type, std::string_view path);

// "libname.so.1": no directory, and nothing hidden.
bool is_library_file(std::string_view text);

bool is_function_name(std::string_view text);

// The name of one thing in a directory, encoded: neither "." nor "..".
bool is_entry(std::string_view text);

}  // namespace nimba::archive
