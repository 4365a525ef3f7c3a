// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"
#include "tools/smi/report.hpp"

namespace nimba::smi {

// The command "sensors": the temperature and fans of the adapters.
Report sensors_command(const Options& options);

}  // namespace nimba::smi
