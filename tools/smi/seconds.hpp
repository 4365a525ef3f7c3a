// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace nimba::smi {

// The time that a text such as "2.5" tells in seconds, rounded up to milliseconds, when it is from
// `shortest` to `longest`.
std::optional<std::chrono::milliseconds> parse_seconds(const std::string& text, double shortest,
                                                       double longest);

}  // namespace nimba::smi
