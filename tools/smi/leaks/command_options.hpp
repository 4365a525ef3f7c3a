// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"

namespace CLI {
class App;
}

namespace nimba::smi {

// Adds what "leaks" takes: --interval, --count, --fail-on-growth, and what all commands about
// memory take.
void add_leaks_options(CLI::App& command, Options& options);

// What is wrong with the options taken together; empty when nothing is.
const char* leaks_options_fault(const Options& options);

}  // namespace nimba::smi
