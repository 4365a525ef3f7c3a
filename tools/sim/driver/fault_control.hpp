// SPDX-License-Identifier: MIT
#pragma once

#include "driver/fault_plan.hpp"
#include "driver/node_source.hpp"

#include <string_view>

namespace nimba::sim {

// The node at the top, in no listing, through which `nimba-sim fault` has its way.
inline constexpr std::string_view kFaultNode = ".nimba-sim-faults";
// The command that switches all faults off.
inline constexpr std::string_view kClearFaults = "clear\n";

// A driver with that node: its text is the faults that are switched on, each a table of a machine
// file. Its commands are kClearFaults and a fault as such a table has it, without the heading. A
// command is rejected with EINVAL when it makes no sense, with ENODEV when there is no such
// adapter.
class FaultControl final : public NodeSource {
  public:
    FaultControl(NodeSource& driver, FaultPlan& plan) : driver_{driver}, plan_{plan} {}

    std::optional<NodeAttributes> look_up(const std::string& path) override;
    std::vector<std::string> list(const std::string& directory) override;
    std::optional<std::string> read(const std::string& file) override;
    int write(const std::string& file, std::string_view text) override;

  private:
    int command(std::string_view text);
    bool has_adapter(int card);

    NodeSource& driver_;
    FaultPlan& plan_;
};

}  // namespace nimba::sim
