// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"
#include "tools/smi/report.hpp"

namespace nimba::smi {

// What the tool does without a command: the overview of the adapters and their processes.
Report overview_command(const Options& options);

}  // namespace nimba::smi
