// SPDX-License-Identifier: MIT
#include "recorded_pauses.hpp"

#include <unistd.h>

#include <ctime>
#include <utility>

namespace nimba::test {
namespace {

Pauses pauses;
std::function<void()> pause_action;

void record(std::chrono::nanoseconds pause)
{
    pauses.push_back(std::chrono::duration_cast<std::chrono::microseconds>(pause));
    if (pause_action) {
        pause_action();
    }
}

void record(const timespec& pause)
{
    record(std::chrono::seconds{pause.tv_sec} + std::chrono::nanoseconds{pause.tv_nsec});
}

}  // namespace

Pauses take_pauses()
{
    return std::exchange(pauses, {});
}

DuringPauses::DuringPauses(std::function<void()> action)
{
    pause_action = std::move(action);
}

DuringPauses::~DuringPauses()
{
    pause_action = nullptr;
}

}  // namespace nimba::test

// These stand before the C library's functions in this program.
extern "C" {
int usleep(useconds_t useconds)
{
    nimba::test::record(std::chrono::microseconds{useconds});
    return 0;
}

int nanosleep(const timespec* requested_time, timespec*)
{
    nimba::test::record(*requested_time);
    return 0;
}

int clock_nanosleep(clockid_t, int, const timespec* req, timespec*)
{
    nimba::test::record(*req);
    return 0;
}
}
