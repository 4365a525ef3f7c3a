// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"
#include "tools/smi/report.hpp"

namespace nimba::smi {

Report capture_command(const Options& options);

}  // namespace nimba::smi
