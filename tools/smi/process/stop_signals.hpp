// SPDX-License-Identifier: MIT
#pragma once

#include "tools/descriptor.hpp"

#include <chrono>
#include <csignal>
#include <cstdint>

namespace nimba::smi {

// The signals that end a process which does nothing about them, but for those that it was started
// to ignore, and those by which its own faults end it, which cannot wait: SIGSEGV and its like.
sigset_t ending_signals();

// What SIGHUP, SIGINT and SIGTERM do that came in the lifetime of StopSignals.
enum class SignalEffect : uint8_t {
    kEndOfRun,      // no more than whoever waits for them makes of them
    kEndOfProcess,  // as any other: they end the process as if they came at the end of the lifetime
};

// As long as it lives, no ending signal ends the process, but they can be waited for: all except
// SIGPIPE, of which whoever writes learns by the write.
class StopSignals final {
  public:
    explicit StopSignals(SignalEffect effect);
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;
    ~StopSignals();

    // Readable once one of the signals came.
    [[nodiscard]] int descriptor() const { return signals_.get(); }

    // Waits until `end`. Returns early, and true, when one of the signals came.
    [[nodiscard]] bool wait_until(std::chrono::steady_clock::time_point end) const;

  private:
    SignalEffect effect_;
    sigset_t before_{};
    tools::Descriptor signals_;
};

}  // namespace nimba::smi
