// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"
#include "tools/smi/report.hpp"

namespace nimba::smi {

// The command "flag": the driver's control flag.
Report flag_command(const Options& options);

}  // namespace nimba::smi
