// SPDX-License-Identifier: MIT
#include "tools/smi/export/task_thread.hpp"

#include <utility>

namespace nimba::smi::exporting {

TaskThread::~TaskThread()
{
    {
        const std::lock_guard lock{mutex_};
        ending_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

std::future<void> TaskThread::start(std::function<void()> task)
{
    std::packaged_task<void()> packaged{std::move(task)};
    auto done = packaged.get_future();
    {
        const std::lock_guard lock{mutex_};
        task_ = std::move(packaged);
    }
    changed_.notify_all();
    return done;
}

void TaskThread::run()
{
    std::unique_lock lock{mutex_};
    while (true) {
        changed_.wait(lock, [this] { return task_ || ending_; });
        if (!task_) {
            return;
        }
        auto task = *std::exchange(task_, std::nullopt);
        lock.unlock();
        task();
        lock.lock();
    }
}

}  // namespace nimba::smi::exporting
