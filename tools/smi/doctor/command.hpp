// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"
#include "tools/smi/report.hpp"

namespace nimba::smi {

// The command "doctor": why things do not work, and how to mend them.
Report doctor_command(const Options& options);

}  // namespace nimba::smi
