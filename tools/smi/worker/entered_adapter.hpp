// SPDX-License-Identifier: MIT
// The worker's adapter, made current in the library.
#pragma once

#include "tools/smi/adapter.hpp"
#include "tools/smi/worker/session.hpp"

#include <optional>

namespace nimba::smi {

struct EnteredAdapter {
    Adapter adapter;
    bool complete = false;  // its kernel-interface library serves the library, too
};

// Makes the worker's adapter current, at the first call, and switches usage accounting on; the
// session's leave_adapter switches it off. An incomplete adapter is current all the same. Nothing
// when the slot is empty.
std::optional<EnteredAdapter> enter_own_adapter(Session& session);

}  // namespace nimba::smi
