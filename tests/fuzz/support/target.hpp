// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace nimba::fuzz {

// What a fuzzer does with an input. Each defines its own.
void try_input(std::string_view input);

}  // namespace nimba::fuzz
