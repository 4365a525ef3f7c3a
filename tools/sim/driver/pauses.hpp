// SPDX-License-Identifier: MIT
#pragma once

#include "driver/fuse.hpp"

#include <condition_variable>

#include <chrono>
#include <mutex>

namespace nimba::sim {

// Lets requests of the kernel wait.
class Pauses {
  public:
    // Returns whether the time has passed. Else a signal has come for the process that waits for
    // the request, or end() has been called.
    bool wait(fuse_req_t request, std::chrono::milliseconds length);

    // Ends all waiting, now and from now on.
    void end();

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool ended_ = false;
};

}  // namespace nimba::sim
