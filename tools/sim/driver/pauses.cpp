// SPDX-License-Identifier: MIT
#include "driver/pauses.hpp"

#include <functional>

namespace nimba::sim {
namespace {

void run(fuse_req_t /*request*/, void* function)
{
    (*static_cast<std::function<void()>*>(function))();
}

}  // namespace

bool Pauses::wait(fuse_req_t request, std::chrono::milliseconds length)
{
    bool interrupted = false;
    std::function<void()> interrupt = [&] {
        const std::scoped_lock lock{mutex_};
        interrupted = true;
        changed_.notify_all();
    };
    fuse_req_interrupt_func(request, run, &interrupt);
    bool passed = false;
    {
        std::unique_lock lock{mutex_};
        const auto time = waiting_ < kMost ? length : std::chrono::milliseconds{0};
        ++waiting_;
        passed = !changed_.wait_for(lock, time, [&] { return interrupted || ended_; });
        --waiting_;
    }
    fuse_req_interrupt_func(request, nullptr, nullptr);
    return passed;
}

void Pauses::end()
{
    const std::scoped_lock lock{mutex_};
    ended_ = true;
    changed_.notify_all();
}

}  // namespace nimba::sim
