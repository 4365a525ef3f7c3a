// SPDX-License-Identifier: MIT
#pragma once

#include "driver/command_log.hpp"
#include "driver/fault_plan.hpp"
#include "driver/node_source.hpp"

#include <mutex>
#include <string_view>

namespace nimba::sim {

// The node at the top, in no listing, through which `nimba-sim commands` has its way.
inline constexpr std::string_view kCommandNode = ".nimba-sim-commands";
// The command that empties the log.
inline constexpr std::string_view kClearCommands = "clear\n";

// A driver that keeps its commands, with that node: its text is the log, and its only command is
// kClearCommands; others are rejected with EINVAL. A command that a fault befalls is kept, but the
// driver does not get it. Commands are carried out one after the other.
class CommandControl final : public NodeSource {
  public:
    CommandControl(NodeSource& driver, FaultPlan& plan) : driver_{driver}, plan_{plan} {}

    std::optional<NodeAttributes> look_up(const std::string& path) override;
    std::vector<std::string> list(const std::string& directory) override;
    std::optional<std::string> read(const std::string& file) override;
    int write(const std::string& file, std::string_view text) override;

  private:
    NodeSource& driver_;
    FaultPlan& plan_;
    std::mutex mutex_;  // guards what follows
    CommandLog log_;
};

}  // namespace nimba::sim
