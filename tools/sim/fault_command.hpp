// SPDX-License-Identifier: MIT
#pragma once

#include <CLI/CLI.hpp>

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace nimba::sim {

// `nimba-sim fault`: switches faults of the machine on and off, from inside a run.
class FaultCommand {
  public:
    explicit FaultCommand(CLI::App& app);

    bool parsed() const { return subcommand_->parsed(); }

    // Does what the words say; returns what is to be printed. Throws TestBedError where there is no
    // machine with live drivers.
    std::string run() const;

  private:
    void check();

    CLI::App* subcommand_;  // the parser's
    bool list_ = false;
    bool clear_ = false;
    std::map<std::string, std::string> texts_;  // by key
    std::map<std::string, std::optional<int64_t>> numbers_;
    std::string fault_;  // as the machine takes it
};

}  // namespace nimba::sim
