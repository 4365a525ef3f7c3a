// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"
#include "tools/smi/report.hpp"

namespace nimba::smi {

// Gives what the machine tells to Prometheus: once, in a file, or over HTTP.
Report export_command(const Options& options);

}  // namespace nimba::smi
