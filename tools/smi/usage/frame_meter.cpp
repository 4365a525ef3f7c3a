// SPDX-License-Identifier: MIT
#include "tools/smi/usage/frame_meter.hpp"

#include <utility>

namespace nimba::smi {
namespace {

// From the second number to the first, which is not smaller.
uint64_t difference(int64_t to, int64_t from)
{
    return static_cast<uint64_t>(to) - static_cast<uint64_t>(from);
}

// The driver's count of flips goes on from 0 behind its largest number. A step of more than half
// the way is one back: the driver counts anew.
std::optional<uint64_t> flips_between(uint32_t from, uint32_t to)
{
    const uint32_t change = to - from;
    return change <= INT32_MAX ? std::optional<uint64_t>(change) : std::nullopt;
}

std::optional<uint64_t> blits_between(const std::optional<int64_t>& from,
                                      const std::optional<int64_t>& to)
{
    return from && to && *to >= *from ? std::optional(difference(*to, *from)) : std::nullopt;
}

std::optional<double> per_second(const std::optional<uint64_t>& count, uint64_t nanoseconds)
{
    constexpr double kNanoseconds = 1e9;
    return count && nanoseconds != 0 ? std::optional(static_cast<double>(*count) * kNanoseconds /
                                                     static_cast<double>(nanoseconds))
                                     : std::nullopt;
}

std::optional<uint64_t> sum(const std::optional<uint64_t>& a, const std::optional<uint64_t>& b)
{
    return a && b ? std::optional(*a + *b) : std::nullopt;
}

}  // namespace

FrameRates FrameMeter::add(const FrameCounts& counts)
{
    FrameRates rates;
    if (counts.flips && counts.time) {
        const Sample now{*counts.flips, *counts.time, counts.blits};
        if (last_ && now.time > last_->time) {
            rates = rates_since(*last_, now);
        }
        if (!last_ || now.time != last_->time) {
            last_ = now;
        }
    }
    rates.average = per_second(frames_, nanoseconds_);
    return rates;
}

FrameRates FrameMeter::rates_since(const Sample& before, const Sample& now)
{
    const uint64_t nanoseconds = difference(now.time, before.time);
    const auto flips = flips_between(before.flips, now.flips);
    const auto blits = blits_between(before.blits, now.blits);
    const auto both = sum(flips, blits);
    if (both) {
        frames_ += *both;
        nanoseconds_ += nanoseconds;
    }
    return {per_second(flips, nanoseconds), per_second(blits, nanoseconds),
            per_second(both, nanoseconds), std::nullopt};
}

}  // namespace nimba::smi
