// SPDX-License-Identifier: MIT
#pragma once

#include "video_memory.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace nimba::sim {

// The name of a directory that is called by the handle: a number in hexadecimal, of `least_digits`
// or more; a text as it is. Nothing: no directory can have that name.
std::optional<std::string> handle_name(const NodeValue& handle, std::size_t least_digits);

// The number that a node shows as this handle's, where it is not one of its own: 0x1f and the text
// "1f" are shown alike.
std::optional<int64_t> shown_handle(const NodeValue& handle);

}  // namespace nimba::sim
