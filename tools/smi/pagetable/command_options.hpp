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

// Adds what "pagetable" takes.
void add_page_table_options(CLI::App& command, Options& options);

// What is wrong with them taken together; empty when nothing is.
const char* page_table_options_fault(const Options& options);

// A virtual address as it is shown, "0x100000000", or in decimal.
std::optional<uint64_t> parse_address(std::string_view text);

}  // namespace nimba::smi
