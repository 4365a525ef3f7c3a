// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"
#include "tools/smi/report.hpp"

namespace nimba::smi {

// The command "prefer": which GPU applications should use.
Report prefer_command(const Options& options);

}  // namespace nimba::smi
