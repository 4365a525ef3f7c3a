// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/list/snapshot.hpp"
#include "tools/smi/process/ask.hpp"
#include "tools/smi/worker/payload.hpp"

#include <span>

namespace nimba::smi {

// Puts the listing together: what discovery said, and each slot's own reply, in slot order.
// An adapter without an answer is left out and is a problem.
ListSnapshot assemble(const Discovery& discovery, std::span<const Reply> replies);

}  // namespace nimba::smi
