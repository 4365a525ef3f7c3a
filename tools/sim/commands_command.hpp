// SPDX-License-Identifier: MIT
#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace nimba::sim {

// `nimba-sim commands`: tells what the machine's drivers were told, from inside a run.
class CommandsCommand {
  public:
    explicit CommandsCommand(CLI::App& app);

    bool parsed() const { return subcommand_->parsed(); }

    // Does what the words say; returns what is to be printed. Throws TestBedError where there is no
    // machine with live drivers.
    std::string run() const;

  private:
    CLI::App* subcommand_;  // the parser's
    bool clear_ = false;
    bool json_ = false;
};

}  // namespace nimba::sim
