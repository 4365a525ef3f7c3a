// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"
#include "tools/smi/report.hpp"

namespace nimba::smi {

// The command "clocks": the clocks of the adapters.
Report clocks_command(const Options& options);

}  // namespace nimba::smi
