// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"

namespace CLI {
class App;
}

namespace nimba::smi {

// Adds --watch, --count, --adapter, --csv and --top.
void add_overview_options(CLI::App& app, Options& options);

}  // namespace nimba::smi
