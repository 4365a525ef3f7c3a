// SPDX-License-Identifier: MIT
#pragma once

#include "tools/descriptor.hpp"

#include <chrono>
#include <csignal>
#include <cstdint>

namespace nimba::smi {

// What a signal does that came in the lifetime of StopSignals.
enum class SignalEffect : uint8_t {
    kEndOfRun,      // no more than whoever waits for it makes of it
    kEndOfProcess,  // it ends the process as if it came at the end of the lifetime
};

// As long as it lives, SIGHUP, SIGINT and SIGTERM do not end the process but can be waited for. A
// signal that the process was started to ignore is still ignored.
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
