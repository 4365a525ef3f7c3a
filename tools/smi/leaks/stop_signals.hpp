// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/descriptor.hpp"

#include <chrono>
#include <csignal>

namespace nimba::smi {

// As long as it lives, SIGINT and SIGTERM do not end the process but can be waited for. A signal
// that the process was started to ignore is still ignored.
class StopSignals final {
  public:
    StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;
    ~StopSignals();

    // Readable once one of the signals came.
    [[nodiscard]] int descriptor() const { return signals_.get(); }

    // Waits until `end`. Returns early, and true, when one of the signals came.
    [[nodiscard]] bool wait_until(std::chrono::steady_clock::time_point end) const;

  private:
    sigset_t before_{};
    Descriptor signals_;
};

}  // namespace nimba::smi
