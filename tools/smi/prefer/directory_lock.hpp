// SPDX-License-Identifier: MIT
#pragma once

#include "tools/descriptor.hpp"
#include "tools/smi/process/stop_signals.hpp"

#include <chrono>
#include <cstdint>
#include <string>

namespace nimba::smi {

enum class LockState : uint8_t {
    kHeld,
    kBusy,         // another process had it all the time, or the user wants to end
    kUnavailable,  // there are no locks here, as in some network file systems
};

// Keeps other processes that take it from changing the files of a directory at the same time, as
// long as it lives. Nothing is written into the directory.
class DirectoryLock final {
  public:
    // Waits for the lock, at most `patience`, and no longer than until one of the signals came.
    DirectoryLock(const std::string& directory, std::chrono::milliseconds patience,
                  const StopSignals& signals);

    [[nodiscard]] LockState state() const { return state_; }

  private:
    tools::Descriptor directory_;
    LockState state_ = LockState::kUnavailable;
};

}  // namespace nimba::smi
