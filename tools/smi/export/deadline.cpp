// SPDX-License-Identifier: MIT
#include "tools/smi/export/deadline.hpp"

#include <sys/epoll.h>
#include <sys/timerfd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace nimba::smi::exporting {
namespace {

void check(bool done)
{
    if (!done) {
        throw std::system_error{errno, std::generic_category(), "cannot make a deadline"};
    }
}

// A timer of no time at all never ends.
itimerspec after(std::chrono::milliseconds time)
{
    time = std::max(time, std::chrono::milliseconds{1});
    const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
    itimerspec spec{};
    spec.it_value.tv_sec = seconds.count();
    spec.it_value.tv_nsec = std::chrono::nanoseconds{time - seconds}.count();
    return spec;
}

bool watch(int epoll, int descriptor)
{
    epoll_event event{};
    event.events = EPOLLIN;
    return ::epoll_ctl(epoll, EPOLL_CTL_ADD, descriptor, &event) == 0;
}

}  // namespace

Deadline::Deadline(std::chrono::milliseconds time, int stop)
    : timer_{::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)},
      either_{::epoll_create1(EPOLL_CLOEXEC)}
{
    const itimerspec end = after(time);
    check(timer_ && either_ && ::timerfd_settime(timer_.get(), 0, &end, nullptr) == 0 &&
          watch(either_.get(), timer_.get()) && (stop < 0 || watch(either_.get(), stop)));
}

}  // namespace nimba::smi::exporting
