// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"

namespace CLI {
class App;
}

namespace nimba::smi {

// Adds the options of "export".
void add_export_options(CLI::App& command, Options& options);

// What is wrong with them taken together; empty when nothing is.
const char* export_options_fault(const Options& options);

}  // namespace nimba::smi
