// SPDX-License-Identifier: MIT
#include "tools/smi/top/view_gauge.hpp"

#include "tools/smi/top/gauges.hpp"
#include "tools/smi/top/plot.hpp"
#include "tools/smi/top/unicode.hpp"

#include <fmt/core.h>

#include <cmath>
#include <optional>
#include <string>
#include <utility>

namespace nimba::smi::top {
namespace {

constexpr double kHundred = 100;
constexpr int kFrameSides = 2;

std::optional<double> total_of(const Gauge& gauge, const AdapterState* adapter)
{
    return adapter != nullptr && gauge.total != nullptr ? gauge.total(*adapter) : std::nullopt;
}

double scale_of(const Gauge& gauge, const AdapterState* adapter,
                const std::optional<double>& largest)
{
    if (gauge.scale == ScaleKind::kHundred) {
        return kHundred;
    }
    const auto total = total_of(gauge, adapter);
    return total && *total > 0 ? *total : scale_end(largest.value_or(0));
}

// A share of a fixed scale is known by its height; others say where theirs ends when anything is
// there.
std::string scale_text(const Gauge& gauge, const std::optional<double>& largest, double scale)
{
    return gauge.scale == ScaleKind::kHundred || !largest ? ""
                                                          : fmt::format(" {} ", gauge.text(scale));
}

// "52 s", "8 min", "2 h": the time since the oldest of so many samples; empty when there are not as
// many yet.
std::string time_text(const History& times, std::size_t samples)
{
    const auto newest = times.at_age(0);
    const auto oldest = times.at_age(samples - 1);
    if (!newest || !oldest) {
        return "";
    }
    constexpr double kMinute = 60;
    constexpr double kHour = 3600;
    const double seconds = *newest - *oldest;
    if (seconds < 2 * kMinute) {
        return fmt::format(" {:.0f} s ", seconds);
    }
    return seconds < 2 * kHour ? fmt::format(" {:.0f} min ", seconds / kMinute)
                               : fmt::format(" {:.0f} h ", seconds / kHour);
}

// A text for the newest value, and its ink.
std::pair<std::string, Ink> value_text(const Gauge& gauge, const AdapterState* adapter, bool old)
{
    const auto value = adapter == nullptr ? std::nullopt : gauge.value(*adapter);
    if (!value) {
        return {" n/a ", Ink::kDim};
    }
    const Ink ink = gauge.ink ? *gauge.ink : scale_ink(*value / kHundred);
    return {fmt::format(" {} ", gauge.text(*value)), old ? Ink::kDim : ink};
}

void draw_area(Canvas& canvas, const Area& inside, const Gauge& gauge, const History& history,
               double scale, Marks marks)
{
    const auto rows = plot(
        history, scale,
        {static_cast<std::size_t>(inside.width), static_cast<std::size_t>(inside.height)}, marks);
    for (int row = 0; row < inside.height; ++row) {
        const double height = 1 - (row + 0.5) / inside.height;
        const Ink ink = gauge.ink ? *gauge.ink : scale_ink(height);
        for (int column = 0; column < inside.width; ++column) {
            canvas.put(inside.x + column, inside.y + row,
                       rows[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)], ink);
        }
    }
}

}  // namespace

void draw_gauge(Canvas& canvas, const Area& area, const State& state, std::size_t number, bool old)
{
    const Gauge& gauge = gauges()[number];
    const AdapterState* const adapter = state.adapter();
    const History& history = state.history(number);
    const Area inside{area.x + 1, area.y + 1, area.width - kFrameSides, area.height - kFrameSides};
    const Marks marks = state.settings().marks;
    const std::size_t samples = static_cast<std::size_t>(inside.width) * samples_per_column(marks);
    const auto largest = history.largest(samples);
    const double scale = scale_of(gauge, adapter, largest);

    draw_frame(canvas, area);
    draw_area(canvas, inside, gauge, history, scale, marks);
    const auto [text, ink] = value_text(gauge, adapter, old);
    const int right = area.x + area.width - 1;
    const int room = inside.width - width_of(text) - 2;
    const char* const title = width_of(gauge.title) <= room ? gauge.title : gauge.brief;
    canvas.put(area.x + 1, area.y, fmt::format(" {} ", title), Ink::kTitle, inside.width);
    canvas.put(right - width_of(text), area.y, text, ink);

    const int bottom = area.y + area.height - 1;
    const std::string end = scale_text(gauge, largest, scale);
    canvas.put(area.x + 1, bottom, time_text(state.times(), samples), Ink::kDim, inside.width);
    canvas.put(right - width_of(end), bottom, end, Ink::kDim);
}

}  // namespace nimba::smi::top
