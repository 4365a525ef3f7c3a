// SPDX-License-Identifier: MIT
// What workers answer about the summaries of their adapter, which stays current for the next.
#pragma once

#include "tools/smi/worker/message.hpp"
#include "tools/smi/worker/session.hpp"

namespace nimba::smi {

Message answer_summary(Session& session);

}  // namespace nimba::smi
