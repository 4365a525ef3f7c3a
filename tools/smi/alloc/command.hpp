// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"
#include "tools/smi/report.hpp"

namespace nimba::smi {

// The command "alloc": the video-memory allocations.
Report alloc_command(const Options& options);

}  // namespace nimba::smi
