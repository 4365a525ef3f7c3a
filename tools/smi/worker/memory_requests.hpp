// SPDX-License-Identifier: MIT
// What workers answer about the video memory of their adapter.
#pragma once

#include "tools/smi/worker/message.hpp"
#include "tools/smi/worker/session.hpp"

namespace nimba::smi {

// All allocations and device contexts, once. The adapter is left again.
Message answer_memory(Session& session);

// The same, for one sample of many: the adapter stays current for the next.
Message answer_memory_sample(Session& session);

// One snapshot of the library's leak detector. The adapter stays current for the next.
Message answer_leaks(Session& session);

// Enters and leaves the adapter, which switches off the usage accounting that a worker that died
// has left on.
Message answer_tidy(Session& session);

}  // namespace nimba::smi
