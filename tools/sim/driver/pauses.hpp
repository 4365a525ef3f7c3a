// SPDX-License-Identifier: MIT
#pragma once

#include "driver/fuse.hpp"

#include <condition_variable>

#include <chrono>
#include <mutex>

namespace nimba::sim {

// Lets requests of the kernel wait, each in the thread that answers it.
class Pauses {
  public:
    // Returns true when the time has passed, or at once while kMost others wait. Else a signal has
    // come for the process that waits for the request, or end() has been called.
    bool wait(fuse_req_t request, std::chrono::milliseconds length);

    // Ends all waiting, now and from now on.
    void end();

    // So many can wait at once. Threads must remain to hear of signals, which end the waiting.
    static constexpr int kMost = 200;

  private:
    std::mutex mutex_;  // guards what follows
    std::condition_variable changed_;
    int waiting_ = 0;
    bool ended_ = false;
};

}  // namespace nimba::sim
