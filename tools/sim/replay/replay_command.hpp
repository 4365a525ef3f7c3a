// SPDX-License-Identifier: MIT
#pragma once

#include "run.hpp"
#include "simulation.hpp"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace nimba::sim {

// `nimba-sim replay`: runs a command on the machine of a capture.
class ReplayCommand {
  public:
    explicit ReplayCommand(CLI::App& app);

    bool parsed() const { return subcommand_->parsed(); }

    // What --drivers says; empty without it.
    const std::string& drivers() const { return drivers_; }

    // As run_on_machine does. Throws MachineFileError when the capture cannot be used.
    int run(const std::vector<std::string>& command, const Installation& installation,
            Drivers drivers) const;

  private:
    CLI::App* subcommand_;  // the parser's
    std::string file_;
    std::string drivers_;
    double speed_ = 1;
};

}  // namespace nimba::sim
