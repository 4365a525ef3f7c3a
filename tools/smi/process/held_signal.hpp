// SPDX-License-Identifier: MIT
#pragma once

#include <csignal>

namespace nimba::smi {

// Whether a signal that comes has no effect on this process.
inline bool is_ignored(int signal)
{
    struct sigaction action {};
    return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

// As long as it lives, a signal has no effect; one that came has it at the end.
class HeldSignal final {
  public:
    explicit HeldSignal(int signal)
    {
        sigset_t held;
        ::sigemptyset(&held);
        ::sigaddset(&held, signal);
        ::sigprocmask(SIG_BLOCK, &held, &before_);
    }
    HeldSignal(const HeldSignal&) = delete;
    HeldSignal& operator=(const HeldSignal&) = delete;
    ~HeldSignal() { ::sigprocmask(SIG_SETMASK, &before_, nullptr); }

  private:
    sigset_t before_{};
};

}  // namespace nimba::smi
