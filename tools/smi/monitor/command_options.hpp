// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"

namespace CLI {
class App;
}

namespace nimba::smi {

// Adds what all commands take that show samples: --watch, --count, --adapter, --csv.
void add_monitor_options(CLI::App& command, Options& options);

// Adds these and --interval, for samples that cover a time.
void add_usage_options(CLI::App& command, Options& options);

// What is wrong with them taken together; empty when nothing is.
const char* monitor_options_fault(const Options& options);

}  // namespace nimba::smi
