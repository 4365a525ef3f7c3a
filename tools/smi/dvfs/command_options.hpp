// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"

namespace CLI {
class App;
}

namespace nimba::smi {

// Adds what "dvfs" takes: get, set, save and restore with their options.
void add_dvfs_options(CLI::App& command, Options& options);

// What is wrong with them taken together; empty when nothing is.
const char* dvfs_options_fault(const Options& options);

// Adds --adapter for commands that show all adapters and change one.
void add_settings_adapter_option(CLI::App& command, Options& options);

}  // namespace nimba::smi
