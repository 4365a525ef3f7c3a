// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"
#include "tools/smi/report.hpp"

namespace nimba::smi {

struct Command {
    const char* name;
    const char* summary;
    Report (*run)(const Options& options);
};

}  // namespace nimba::smi
