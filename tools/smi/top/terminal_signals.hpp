// SPDX-License-Identifier: MIT
#pragma once

#include "tools/descriptor.hpp"

#include <csignal>
#include <optional>

namespace nimba::smi::top {

// As long as it lives, signals that have to do with the terminal do not reach the process but can
// be waited for: SIGHUP, SIGINT, SIGQUIT and SIGTERM, which end a program, SIGTSTP, SIGCONT and
// SIGWINCH. Those of them that the process was started to ignore are still ignored. Threads that
// are started meanwhile hold them back, too.
class TerminalSignals final {
  public:
    // Throws std::system_error when signals cannot be waited for.
    TerminalSignals();
    TerminalSignals(const TerminalSignals&) = delete;
    TerminalSignals& operator=(const TerminalSignals&) = delete;
    ~TerminalSignals();

    // Readable once one of the signals came.
    [[nodiscard]] int descriptor() const { return signals_.get(); }

    // One that came; nothing without any.
    [[nodiscard]] std::optional<int> next() const;

    // Stops the process as SIGTSTP would; returns when it goes on.
    static void stop_process();

  private:
    sigset_t before_{};
    tools::Descriptor signals_;
};

}  // namespace nimba::smi::top
