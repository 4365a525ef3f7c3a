// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/exit_status.hpp"
#include "tools/smi/worker/payload.hpp"

#include <optional>
#include <string>
#include <vector>

namespace nimba::smi {

// What "version" found out.
struct VersionSnapshot {
    std::string tool_version;
    std::optional<LibraryVersion> library;  // when it could be loaded and asked
    std::vector<Problem> problems;
};

}  // namespace nimba::smi
