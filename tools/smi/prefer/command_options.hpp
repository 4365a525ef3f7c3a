// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"

namespace CLI {
class App;
}

namespace nimba::smi {

// Adds what "prefer" takes: list, set and remove with their options.
void add_prefer_options(CLI::App& command, Options& options);

// What is wrong with them taken together; empty when nothing is.
const char* prefer_options_fault(const Options& options);

}  // namespace nimba::smi
