// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"

namespace CLI {
class App;
}

namespace nimba::smi {

// Adds what all commands about adapters take: --adapter, --csv.
void add_adapter_options(CLI::App& command, Options& options);

// Adds --top.
void add_top_option(CLI::App& command, Options& options);

// Adds what all commands about allocations take: both.
void add_memory_options(CLI::App& command, Options& options);

// What is wrong with them taken together; empty when nothing is.
const char* memory_options_fault(const Options& options);

}  // namespace nimba::smi
