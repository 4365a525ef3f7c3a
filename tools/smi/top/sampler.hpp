// SPDX-License-Identifier: MIT
#pragma once

#include "tools/descriptor.hpp"
#include "tools/smi/options.hpp"
#include "tools/smi/snapshot/adapter_state.hpp"

#include <condition_variable>

#include <chrono>
#include <cstdint>
#include <deque>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>

namespace nimba::smi::top {

// Takes snapshots of the machine in a thread of its own, so that whoever shows them waits for no
// driver. The thread has the signal mask of the one that makes the object.
class Sampler final {
  public:
    // Throws std::system_error when the thread cannot be started.
    Sampler(const Options& options, std::chrono::milliseconds interval);
    Sampler(const Sampler&) = delete;
    Sampler& operator=(const Sampler&) = delete;

    // Ends the workers; those that do not answer get a second.
    ~Sampler();

    // Readable when next has something to tell.
    [[nodiscard]] int descriptor() const { return news_.get(); }

    // The oldest snapshot that was not taken yet; nothing without one. Throws what ended the
    // thread.
    std::optional<MachineSnapshot> next();

    // From one snapshot to the next, counted from the beginning of each.
    void set_interval(std::chrono::milliseconds interval);
    void set_paused(bool paused);

  private:
    using Clock = std::chrono::steady_clock;

    void run() noexcept;
    void take_snapshots();
    void hand_over(MachineSnapshot snapshot);

    // Waits until the next snapshot is due. Returns false when there shall be none.
    bool wait_for_next(Clock::time_point begin);

    const Options& options_;
    tools::Descriptor news_;
    tools::Descriptor stop_;  // readable once the thread shall end
    std::mutex mutex_;        // guards what follows
    std::condition_variable changed_;
    std::chrono::milliseconds interval_;
    bool paused_ = false;
    bool stopping_ = false;
    std::deque<MachineSnapshot> snapshots_;
    std::exception_ptr error_;
    std::thread thread_;
};

}  // namespace nimba::smi::top
