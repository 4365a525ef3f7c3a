// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace nimba::smi::exporting {

// Which processes have series of their own.
struct ProcessCap {
    bool none = false;      // no series names a process
    std::size_t most = 50;  // of an adapter; the others are one together
};

// What those together have in place of a process name.
inline constexpr const char* kOtherProcesses = "other";

}  // namespace nimba::smi::exporting
