// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"

namespace CLI {
class App;
}

namespace nimba::smi {

// Adds --interval, --count, --ascii and --adapter; the help ends with the keys of the view.
void add_top_options(CLI::App& command, Options& options);

}  // namespace nimba::smi
