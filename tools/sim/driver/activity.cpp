// SPDX-License-Identifier: MIT
#include "driver/activity.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <ratio>

namespace nimba::sim {
namespace {

constexpr int64_t kSecond = std::nano::den;

// How often something that happens `rate` times per second has happened after so many nanoseconds.
int64_t times_until(int64_t rate, int64_t nanoseconds)
{
    return rate * (nanoseconds / kSecond) + rate * (nanoseconds % kSecond) / kSecond;
}

// From 0 to 1, back, down to -1 and up to 0 again while `turn` goes from 0 to 1.
double triangle(double turn)
{
    if (turn < 0.25) {
        return 4 * turn;
    }
    return turn < 0.75 ? 2 - 4 * turn : 4 * turn - 4;
}

// What triangle() adds up to until then, in turns: as much as nothing after a whole one.
double triangle_sum(double turn)
{
    if (turn < 0.25) {
        return 2 * turn * turn;
    }
    return turn < 0.75 ? 2 * turn * (1 - turn) - 0.25 : 2 * (1 - turn) * (1 - turn);
}

uint32_t part(double load, int64_t at_full_load)
{
    return static_cast<uint32_t>(std::lround(static_cast<double>(at_full_load) * load / 100));
}

}  // namespace

double Activity::load_at(std::chrono::nanoseconds time) const
{
    return std::clamp(static_cast<double>(description_.load) +
                          static_cast<double>(description_.swing) * triangle(turn_at(time)),
                      0.0, 100.0);
}

double Activity::turn_at(std::chrono::nanoseconds time) const
{
    const std::chrono::nanoseconds period{description_.period};
    return static_cast<double>((time % period).count()) / static_cast<double>(period.count());
}

int64_t Activity::flips_until(std::chrono::nanoseconds time) const
{
    const std::chrono::duration<double> period{description_.period};
    const double fewer =
        static_cast<double>(description_.flip_swing) * period.count() * triangle_sum(turn_at(time));
    // The part of a second is small enough for an exact floating-point number.
    const double further =
        static_cast<double>(description_.flips * (time.count() % kSecond)) / kSecond;
    return description_.flips * (time.count() / kSecond) +
           static_cast<int64_t>(std::floor(further - fewer));
}

int64_t Activity::flips() const
{
    return flips_until(time_);
}

int64_t Activity::last_flip() const
{
    const int64_t count = flips();
    if (count <= 0) {
        return 0;
    }
    // The first nanosecond with as many of them, found by halving what it can be in.
    std::chrono::nanoseconds before{0};
    std::chrono::nanoseconds until{time_};
    while (until - before > std::chrono::nanoseconds{1}) {
        const auto middle = before + (until - before) / 2;
        (flips_until(middle) < count ? before : until) = middle;
    }
    return until.count();
}

int64_t Activity::blits() const
{
    return times_until(description_.blits, last_flip());
}

std::array<uint32_t, kBandwidthWords> Activity::bandwidth() const
{
    std::array<uint32_t, kBandwidthWords> words{};
    std::ranges::transform(description_.bandwidth, words.begin(),
                           [&](int64_t rate) { return part(load(), rate); });
    return words;
}

std::array<uint32_t, kUsageWords> Activity::usage() const
{
    std::array<uint32_t, kUsageWords> words{};
    std::ranges::transform(description_.engines, words.begin() + kFirstUsageWord,
                           [&](int64_t percent) { return part(load(), percent); });
    return words;
}

}  // namespace nimba::sim
