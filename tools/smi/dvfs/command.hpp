// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"
#include "tools/smi/report.hpp"

namespace nimba::smi {

// The command "dvfs": the power and DVFS settings.
Report dvfs_command(const Options& options);

}  // namespace nimba::smi
