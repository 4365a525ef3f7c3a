// SPDX-License-Identifier: MIT
#pragma once

#include "tools/descriptor.hpp"

#include <csignal>
#include <optional>

namespace nimba::smi::top {

// As long as it lives, signals that have to do with the terminal do not reach the process but can
// be waited for: SIGHUP, SIGINT, SIGQUIT and SIGTERM, which end the view, SIGTSTP, SIGCONT and
// SIGWINCH. So can the others that end a process; these do so at the end of the lifetime. Those
// that the process was started to ignore are still ignored. Threads that are started meanwhile hold
// them back, too.
class TerminalSignals final {
  public:
    // Throws std::system_error when signals cannot be waited for.
    TerminalSignals();
    TerminalSignals(const TerminalSignals&) = delete;
    TerminalSignals& operator=(const TerminalSignals&) = delete;
    ~TerminalSignals();

    // Readable once one of the signals came.
    [[nodiscard]] int descriptor() const { return signals_.get(); }

    // One that came; nothing without any. One that ends the process is told again and again.
    [[nodiscard]] std::optional<int> next() const;

    // Stops the process as SIGTSTP would; returns when it goes on.
    static void stop_process();

  private:
    // Takes one of the terminal that came.
    [[nodiscard]] std::optional<int> take() const;

    // One that came and ends the process.
    [[nodiscard]] std::optional<int> ending() const;

    sigset_t before_{};
    sigset_t taken_{};   // those of the terminal
    sigset_t ending_{};  // the others
    tools::Descriptor signals_;
};

}  // namespace nimba::smi::top
