// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"
#include "tools/smi/report.hpp"

namespace nimba::smi {

// The command "top": the adapters and their processes live on the whole screen.
Report top_command(const Options& options);

}  // namespace nimba::smi
