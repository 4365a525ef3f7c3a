// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace nimba::sim {

// Whether the UTF-8 text holds characters that a terminal would act on instead of showing them.
bool has_control_characters(std::string_view text);

// The text with its control characters written as "\u001b".
std::string without_control_characters(std::string_view text);

// Writes "nimba-sim: ", the text and a newline to standard error, on one line. A standard error
// that cannot be written changes nothing.
void complain(std::string_view text);

}  // namespace nimba::sim
