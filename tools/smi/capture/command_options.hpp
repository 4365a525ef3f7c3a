// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"

namespace CLI {
class App;
}

namespace nimba::smi {

// Adds what "capture" takes: FILE, --samples, --interval, --redact.
void add_capture_options(CLI::App& command, Options& options);

}  // namespace nimba::smi
