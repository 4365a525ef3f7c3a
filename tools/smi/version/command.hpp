// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"
#include "tools/smi/report.hpp"

namespace nimba::smi {

// The command "version": the tool, the library, and whether they fit.
Report version_command(const Options& options);

}  // namespace nimba::smi
