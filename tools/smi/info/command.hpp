// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"
#include "tools/smi/report.hpp"

namespace nimba::smi {

// The command "info": every field of both summaries of the adapters.
Report info_command(const Options& options);

}  // namespace nimba::smi
