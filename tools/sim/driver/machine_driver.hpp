// SPDX-License-Identifier: MIT
#pragma once

#include "driver/counters.hpp"
#include "driver/node_source.hpp"

#include <chrono>
#include <functional>
#include <memory>

namespace nimba::sim {

// The drivers of all of a machine's adapters: in the directory "dri" the nodes of debugfs, in
// "info", "hwmon" and "proc" those of each adapter, where node_path() says.
class MachineDriver : public NodeSource {
  public:
    // Tells the time since some moment; never goes back.
    using Clock = std::function<std::chrono::nanoseconds()>;

    // Those of the adapter with that card number, which the machine must have.
    virtual Counters counters(int card) = 0;
};

// Makes a machine's drivers, for which time begins then.
using MakeDriver = std::function<std::shared_ptr<MachineDriver>(MachineDriver::Clock clock)>;

}  // namespace nimba::sim
