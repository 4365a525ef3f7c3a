// SPDX-License-Identifier: MIT
// The library's calls about frames, bandwidth and engine use, for the session's current adapter.
#pragma once

#include "tools/smi/adapter.hpp"
#include "tools/smi/monitor/readings.hpp"
#include "tools/smi/worker/monitor.hpp"
#include "tools/smi/worker/session.hpp"

namespace nimba::smi {

// Puts the counters into `reading`, and into its remarks what keeps them from being all. The first
// call prepares them, and has no rates of the library yet: a rate needs a time to count in.
void read_counters(Session& session, Monitor& monitor, const Adapter& adapter,
                   CounterReading& reading);

}  // namespace nimba::smi
