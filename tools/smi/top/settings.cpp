// SPDX-License-Identifier: MIT
#include "tools/smi/top/settings.hpp"

#include <algorithm>
#include <array>
#include <iterator>

namespace nimba::smi::top {
namespace {

using std::chrono::milliseconds;

constexpr std::array kIntervals{milliseconds{100},    milliseconds{200},    milliseconds{500},
                                milliseconds{1'000},  milliseconds{2'000},  milliseconds{5'000},
                                milliseconds{10'000}, milliseconds{30'000}, milliseconds{60'000}};

}  // namespace

void lengthen_interval(Settings& settings)
{
    const auto longer = std::ranges::upper_bound(kIntervals, settings.interval);
    settings.interval = longer == kIntervals.end() ? settings.interval : *longer;
}

void shorten_interval(Settings& settings)
{
    const auto same = std::ranges::lower_bound(kIntervals, settings.interval);
    settings.interval = same == kIntervals.begin() ? settings.interval : *std::prev(same);
}

void take_next_marks(Settings& settings)
{
    if (!settings.ascii) {
        settings.marks = settings.marks == Marks::kBraille  ? Marks::kBlocks
                         : settings.marks == Marks::kBlocks ? Marks::kAscii
                                                            : Marks::kBraille;
    }
}

}  // namespace nimba::smi::top
