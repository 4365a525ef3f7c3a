// SPDX-License-Identifier: MIT
#pragma once

#include "tools/completion/model.hpp"

#include <string>

namespace nimba::completion {

// `TOOL completion SHELL`: prints the script that completes the tool's command line.
class CompletionCommand {
  public:
    explicit CompletionCommand(CLI::App& app);

    bool parsed() const;

    // The script for the shell that was asked for, with everything that the parser has by now.
    std::string script(const Hints& hints) const;

  private:
    CLI::App& app_;
    CLI::App* subcommand_;  // the parser's
    std::string shell_;
};

}  // namespace nimba::completion
