// SPDX-License-Identifier: MIT
#pragma once

#include <condition_variable>
#include <future>

#include <functional>
#include <mutex>
#include <optional>
#include <thread>

namespace nimba::smi::exporting {

// A thread that does one task after the other. What it starts may live from task to task: a worker
// process ends with the thread that started it.
class TaskThread final {
  public:
    // Throws std::system_error when the thread cannot be started.
    TaskThread() : thread_{[this] { run(); }} {}
    TaskThread(const TaskThread&) = delete;
    TaskThread& operator=(const TaskThread&) = delete;

    // Behind the last task.
    ~TaskThread();

    // Has `task` done, while no other is under way. What it throws comes out of the future.
    std::future<void> start(std::function<void()> task);

  private:
    void run();

    std::mutex mutex_;  // guards what follows
    std::condition_variable changed_;
    std::optional<std::packaged_task<void()>> task_;
    bool ending_ = false;
    std::thread thread_;
};

}  // namespace nimba::smi::exporting
