// SPDX-License-Identifier: MIT
#pragma once

#include "driver/debug_fs.hpp"
#include "driver/fault_control.hpp"
#include "driver/fault_plan.hpp"
#include "driver/node_source.hpp"
#include "machine.hpp"

#include <filesystem>
#include <memory>

namespace nimba::sim {

// A machine's drivers, with its faults, as files below a directory.
class ServedDriver {
  public:
    // Throws MountError.
    ServedDriver(std::unique_ptr<NodeSource> driver, const Machine& machine,
                 const std::filesystem::path& directory);

  private:
    std::unique_ptr<NodeSource> driver_;
    FaultPlan faults_;
    FaultControl control_;
    DebugFs debug_fs_;
};

}  // namespace nimba::sim
