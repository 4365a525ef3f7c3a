// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"

#include <optional>
#include <string_view>

namespace CLI {
class App;
}

namespace nimba::smi {

// Adds what "alloc" takes: --sort, the filters, and what all commands about memory take.
void add_alloc_options(CLI::App& command, Options& options);

// "size", "pid:desc", "handle:asc". Without a direction sizes and extents come largest first, all
// else smallest first. Nothing for other texts.
std::optional<SortOrder> parse_sort_order(std::string_view text);

// A device handle as it is shown, "0x1f", or in decimal.
std::optional<uint32_t> parse_device(std::string_view text);

}  // namespace nimba::smi
