// SPDX-License-Identifier: MIT
#include "tools/smi/top/sampler.hpp"

#include "tools/smi/snapshot/collector.hpp"

#include <unistd.h>

#include <sys/eventfd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace nimba::smi::top {
namespace {

tools::Descriptor make_event()
{
    tools::Descriptor event{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
    if (!event) {
        throw std::system_error{errno, std::generic_category(), "cannot make an event"};
    }
    return event;
}

void set(const tools::Descriptor& event)
{
    static_cast<void>(::eventfd_write(event.get(), 1));
}

}  // namespace

Sampler::Sampler(const Options& options, std::chrono::milliseconds interval)
    : options_{options},
      news_{make_event()},
      stop_{make_event()},
      interval_{interval},
      thread_{[this] { run(); }}
{
}

Sampler::~Sampler()
{
    {
        const std::lock_guard lock{mutex_};
        stopping_ = true;
    }
    changed_.notify_all();
    set(stop_);
    thread_.join();
}

std::optional<MachineSnapshot> Sampler::next()
{
    const std::lock_guard lock{mutex_};
    if (snapshots_.empty()) {
        eventfd_t count = 0;
        static_cast<void>(::eventfd_read(news_.get(), &count));
        if (error_) {
            std::rethrow_exception(error_);
        }
        return std::nullopt;
    }
    std::optional<MachineSnapshot> snapshot = std::move(snapshots_.front());
    snapshots_.pop_front();
    return snapshot;
}

void Sampler::set_interval(std::chrono::milliseconds interval)
{
    {
        const std::lock_guard lock{mutex_};
        interval_ = interval;
    }
    changed_.notify_all();
}

void Sampler::set_paused(bool paused)
{
    {
        const std::lock_guard lock{mutex_};
        paused_ = paused;
    }
    changed_.notify_all();
}

void Sampler::run() noexcept
{
    try {
        take_snapshots();
    } catch (...) {
        const std::lock_guard lock{mutex_};
        error_ = std::current_exception();
        set(news_);
    }
}

void Sampler::take_snapshots()
{
    Collector collector{options_, LostWorkers::kReplaced};
    Clock::time_point begin;
    do {
        begin = Clock::now();
        auto snapshot = collector.take(stop_.get());
        if (!snapshot) {
            return;
        }
        hand_over(*std::move(snapshot));
    } while (wait_for_next(begin));
}

void Sampler::hand_over(MachineSnapshot snapshot)
{
    const std::lock_guard lock{mutex_};
    snapshots_.push_back(std::move(snapshot));
    set(news_);
}

bool Sampler::wait_for_next(Clock::time_point begin)
{
    std::unique_lock lock{mutex_};
    while (!stopping_ && (paused_ || Clock::now() < begin + interval_)) {
        if (paused_) {
            changed_.wait(lock);
        } else {
            changed_.wait_until(lock, begin + interval_);
        }
    }
    return !stopping_;
}

}  // namespace nimba::smi::top
