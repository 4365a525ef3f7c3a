// SPDX-License-Identifier: MIT
#include "replay/frames.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

namespace nimba::sim {
namespace {

// What is beyond was not counted by a driver.
constexpr int64_t kMost = int64_t{1} << 62U;

bool is_countable(int64_t number)
{
    return number >= 0 && number <= kMost;
}

// How many whole frames there are in `elapsed`, and how long one takes.
struct Going {
    int64_t frames = 0;
    double length = 0;  // nanoseconds
};

std::optional<Going> going(const std::array<archive::Flips, 2>& flips,
                           std::chrono::nanoseconds elapsed)
{
    const auto& [first, last] = flips;
    if (!is_countable(first.time) || !is_countable(first.count) || !is_countable(last.time) ||
        !is_countable(last.count) || last.time <= first.time || last.count <= first.count) {
        return std::nullopt;
    }
    const double length =
        static_cast<double>(last.time - first.time) / static_cast<double>(last.count - first.count);
    const double frames = std::floor(static_cast<double>(elapsed.count()) / length);
    return frames >= 0 && frames < 1e15 ? std::optional{Going{static_cast<int64_t>(frames), length}}
                                        : std::nullopt;
}

archive::Flips later(const archive::Flips& flips, const Going& going)
{
    const double time = std::round(static_cast<double>(going.frames) * going.length);
    return {flips.time + static_cast<int64_t>(time), flips.count + going.frames};
}

// The decimal numbers that the text begins with; nothing when they are fewer.
template <std::size_t count>
std::optional<std::array<int64_t, count>> numbers(std::string_view text)
{
    std::array<int64_t, count> found{};
    for (int64_t& number : found) {
        text.remove_prefix(std::min(text.find_first_not_of(" \t\n"), text.size()));
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (error != std::errc{}) {
            return std::nullopt;
        }
        text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    }
    return found;
}

std::optional<archive::Flips> flips_of(const archive::FrameNodes& nodes)
{
    const auto told = numbers<2>(nodes.fps_count);
    return told ? std::optional{archive::Flips{(*told)[1], (*told)[0]}} : std::nullopt;
}

// Blits go on with the flips, which alone have times.
std::string blits_after(const std::array<archive::FrameNodes, 2>& frames, int64_t flips,
                        int64_t gone)
{
    const auto first = numbers<1>(frames.front().rxa_blt_scn_cnt);
    const auto last = numbers<1>(frames.back().rxa_blt_scn_cnt);
    if (!first || !last || !is_countable(first->front()) || !is_countable(last->front()) ||
        last->front() <= first->front()) {
        return frames.back().rxa_blt_scn_cnt;
    }
    const double each =
        static_cast<double>(last->front() - first->front()) / static_cast<double>(flips);
    const double more = std::round(each * static_cast<double>(gone));
    return more < 1e15 ? fmt::format("{}\n", last->front() + static_cast<int64_t>(more))
                       : frames.back().rxa_blt_scn_cnt;
}

}  // namespace

archive::Flips flips_after(const std::array<archive::Flips, 2>& flips,
                           std::chrono::nanoseconds elapsed,
                           const std::optional<archive::Flips>& last)
{
    const auto goes = going(flips, elapsed);
    if (!goes) {
        return flips.back();
    }
    const archive::Flips now = later(flips.back(), *goes);
    return last && (now.time > last->time || now.count > last->count) ? *last : now;
}

std::optional<FrameTexts> frame_texts_after(const std::array<archive::FrameNodes, 2>& frames,
                                            std::chrono::nanoseconds elapsed)
{
    const auto first = flips_of(frames.front());
    const auto last = flips_of(frames.back());
    const auto goes = first && last ? going({*first, *last}, elapsed) : std::nullopt;
    if (!goes) {
        return std::nullopt;
    }
    const archive::Flips now = later(*last, *goes);
    return FrameTexts{fmt::format("{} {}\n", now.count, now.time),
                      blits_after(frames, last->count - first->count, goes->frames)};
}

}  // namespace nimba::sim
