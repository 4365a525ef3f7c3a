// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"

namespace CLI {
class App;
}

namespace nimba::smi {

// Adds what "doctor" takes: --adapter.
void add_doctor_options(CLI::App& command, Options& options);

}  // namespace nimba::smi
