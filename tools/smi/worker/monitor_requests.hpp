// SPDX-License-Identifier: MIT
// What workers answer about the segments, clocks, sensors and counters of their adapter. The
// adapter stays current for the next sample, with usage accounting on: the exit of any other tool
// switches it off for everybody, so every sample switches it on again.
#pragma once

#include "tools/smi/worker/message.hpp"
#include "tools/smi/worker/session.hpp"

namespace nimba::smi {

Message answer_segments(Session& session);
Message answer_clocks(Session& session);
Message answer_sensors(Session& session);
Message answer_counters(Session& session);

}  // namespace nimba::smi
