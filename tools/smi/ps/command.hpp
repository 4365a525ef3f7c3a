// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"
#include "tools/smi/report.hpp"

namespace nimba::smi {

// The command "ps": the video memory of each device context and its process.
Report ps_command(const Options& options);

}  // namespace nimba::smi
