// SPDX-License-Identifier: MIT
#pragma once

#include "driver/command_control.hpp"
#include "driver/fault_control.hpp"
#include "driver/fault_plan.hpp"
#include "driver/node_file_system.hpp"
#include "driver/node_source.hpp"
#include "machine.hpp"

#include <filesystem>
#include <memory>

namespace nimba::sim {

// A machine's drivers, with its faults and the log of their commands, as files below a directory.
class ServedDriver {
  public:
    // Throws MountError.
    ServedDriver(std::shared_ptr<NodeSource> driver, const Machine& machine,
                 const std::filesystem::path& directory);

  private:
    std::shared_ptr<NodeSource> driver_;
    FaultPlan faults_;
    CommandControl command_control_;
    FaultControl fault_control_;
    NodeFileSystem file_system_;
};

}  // namespace nimba::sim
