// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/exit_status.hpp"
#include "tools/smi/snapshot/adapter_state.hpp"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <set>
#include <string>
#include <vector>

namespace nimba::smi::top {

// Something that the user should hear of.
struct Event {
    std::chrono::system_clock::time_point time;  // that of the last, when it happened again
    std::string text;
    bool good = false;      // something works again
    std::size_t times = 1;  // in a row

    bool operator==(const Event&) const = default;
};

// What happened from one snapshot to the next: workers that were lost and replaced, drivers that
// went and came back, and other problems when they come up.
class EventLog final {
  public:
    void take(const MachineSnapshot& snapshot);

    // Oldest first; of a long run, only the last ones.
    [[nodiscard]] const std::deque<Event>& events() const { return events_; }

  private:
    void add(std::chrono::system_clock::time_point time, std::string text, bool good);
    void take_presence(const MachineSnapshot& snapshot);
    void take_problem(const MachineSnapshot& snapshot, const Problem& problem);

    std::deque<Event> events_;
    std::set<std::string> gone_;     // bus ids
    std::vector<Problem> problems_;  // of the snapshot before
};

}  // namespace nimba::smi::top
