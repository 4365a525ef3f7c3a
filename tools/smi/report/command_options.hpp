// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"

namespace CLI {
class App;
}

namespace nimba::smi {

// Adds what "report" takes: FILE, --capture, --samples, --interval.
void add_report_options(CLI::App& command, Options& options);

// What is wrong with the combination of options; empty when nothing is.
const char* report_options_fault(const Options& options);

}  // namespace nimba::smi
