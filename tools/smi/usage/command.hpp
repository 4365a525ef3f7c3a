// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"
#include "tools/smi/report.hpp"

namespace nimba::smi {

// The command "usage": the frame rate, bandwidth and engine use of the adapters.
Report usage_command(const Options& options);

}  // namespace nimba::smi
