// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/adapter.hpp"
#include "tools/smi/exit_status.hpp"

#include <optional>
#include <vector>

namespace nimba::smi {

// What "list" found, in slot order.
struct ListSnapshot {
    std::vector<Adapter> adapters;
    std::optional<ForeignGpu> foreign_gpu;
    std::vector<Problem> problems;
};

}  // namespace nimba::smi
