// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"

#include <cstdint>
#include <optional>
#include <string_view>

namespace CLI {
class App;
}

namespace nimba::smi {

// Adds what "flag" takes: get, set and clear.
void add_flag_options(CLI::App& command, Options& options);

// What is wrong with them taken together; empty when nothing is.
const char* flag_options_fault(const Options& options);

// Bits as a number, "0x10" or "16"; nothing for other texts and for no bit at all.
std::optional<uint32_t> parse_bits(std::string_view text);

}  // namespace nimba::smi
