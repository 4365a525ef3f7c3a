// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"
#include "tools/smi/report.hpp"

namespace nimba::smi {

// The command "list": the adapters, and the GPU of another vendor.
Report list_command(const Options& options);

}  // namespace nimba::smi
