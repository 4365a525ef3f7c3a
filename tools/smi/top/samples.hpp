// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/snapshot/adapter_state.hpp"
#include "tools/smi/top/events.hpp"
#include "tools/smi/top/history.hpp"

#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <vector>

namespace nimba::smi::top {

using Clock = std::chrono::steady_clock;

// The newest sample, and what remains of all that came since the view was opened.
class Samples final {
  public:
    explicit Samples(Clock::time_point now);

    // A sample without the processes of an adapter that answers gets those that were last known.
    void take(MachineSnapshot snapshot, Clock::time_point now);

    // Every figure has a gap before the next sample.
    void leave_gap();

    // None before the first one.
    [[nodiscard]] const std::optional<MachineSnapshot>& newest() const { return newest_; }

    // How long ago the newest one came, or the view was opened.
    [[nodiscard]] Clock::duration age(Clock::time_point now) const { return now - last_; }

    // When the processes of that adapter of the newest one were last read, when that is not then.
    [[nodiscard]] std::optional<std::chrono::system_clock::time_point> processes_time(
        const AdapterState& adapter) const;

    // The values of a gauge of that adapter of the newest one.
    [[nodiscard]] const History& history(const AdapterState& adapter, std::size_t gauge) const;

    // The seconds at which the samples came.
    [[nodiscard]] const History& times() const { return times_; }

    [[nodiscard]] const EventLog& events() const { return events_; }

  private:
    // The processes of an adapter at a time.
    struct KnownProcesses {
        UsageTable table;
        std::chrono::system_clock::time_point time;
    };

    void keep_processes(MachineSnapshot& snapshot);

    Clock::time_point opened_;
    Clock::time_point last_;
    std::optional<MachineSnapshot> newest_;
    std::map<int, std::vector<History>> histories_;  // by slot, one for each gauge
    std::map<int, KnownProcesses> processes_;        // by slot
    History times_;
    EventLog events_;
};

}  // namespace nimba::smi::top
