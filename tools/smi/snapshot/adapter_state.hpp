// SPDX-License-Identifier: MIT
// The machine at one time, whole: the one model behind the overview, "info", "top" and their JSON
// and CSV forms.
#pragma once

#include "tools/smi/adapter.hpp"
#include "tools/smi/exit_status.hpp"
#include "tools/smi/mem/segments.hpp"
#include "tools/smi/monitor/readings.hpp"
#include "tools/smi/ps/usage.hpp"
#include "tools/smi/summary/reading.hpp"
#include "tools/smi/worker/payload.hpp"

#include <chrono>
#include <optional>
#include <vector>

namespace nimba::smi {

// An adapter. What could not be read has no values, and a problem of the snapshot says why.
struct AdapterState {
    SlotIdentity adapter;
    bool there = false;      // it answered at least one question
    SummaryReading summary;  // with its description
    SegmentTable segments;   // without any when they could not be read
    ClockReading clocks;
    SensorReading sensors;
    CounterReading counters;
    FrameRates rates;      // since the snapshot before: none in the first
    UsageTable processes;  // its devices, largest first
    bool processes_known = false;
};

struct MachineSnapshot {
    std::chrono::system_clock::time_point time;
    std::vector<AdapterState> adapters;  // in slot order
    std::optional<ForeignGpu> foreign_gpu;
    std::vector<Problem> problems;
};

}  // namespace nimba::smi
