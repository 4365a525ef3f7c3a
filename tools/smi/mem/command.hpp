// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"
#include "tools/smi/report.hpp"

namespace nimba::smi {

// The command "mem": the memory segments, what is used of each and how large it is.
Report mem_command(const Options& options);

}  // namespace nimba::smi
