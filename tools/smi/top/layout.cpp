// SPDX-License-Identifier: MIT
#include "tools/smi/top/layout.hpp"

#include <algorithm>
#include <iterator>

namespace nimba::smi::top {
namespace {

constexpr int kCompactHeight = 16;  // below, nothing has a row that can do without
constexpr int kGaugeWidth = 20;
constexpr int kGaugeHeight = 4;
constexpr int kMostColumns = 4;

// The rows that gauges may take of those that they share with the table: three fifths.
int gauge_rows(int body)
{
    return body * 3 / 5;
}

int rounded_up(int number, int divisor)
{
    return (number + divisor - 1) / divisor;
}

// Those of the lowest ranks, in the order of `wanted`.
std::vector<std::size_t> most_wanted(std::span<const std::size_t> wanted, std::size_t count)
{
    std::vector<std::size_t> kept{wanted.begin(), wanted.end()};
    const auto rank = [](std::size_t gauge) { return gauges()[gauge].rank; };
    std::ranges::sort(kept, {}, rank);
    kept.resize(std::min(count, kept.size()));
    std::ranges::sort(kept);
    return kept;
}

// Puts gauges side by side in bands of the same height. Returns the rows that they take.
int place_gauges(Layout& layout, const Area& room, std::span<const std::size_t> wanted)
{
    const int most_bands = room.height / kGaugeHeight;
    if (wanted.empty() || most_bands == 0) {
        return 0;
    }
    const int most_columns = std::clamp(room.width / kGaugeWidth, 1, kMostColumns);
    const auto kept = most_wanted(
        wanted, static_cast<std::size_t>(most_columns) * static_cast<std::size_t>(most_bands));
    const int count = static_cast<int>(kept.size());
    const int bands = rounded_up(count, most_columns);
    const int columns = rounded_up(count, bands);
    const int height = room.height / bands;
    for (int i = 0; i < count; ++i) {
        const int band = i / columns;
        const int in_band = std::min(columns, count - band * columns);
        const int left = room.width * (i % columns) / in_band;
        const int right = room.width * (i % columns + 1) / in_band;
        layout.gauges.push_back({kept[static_cast<std::size_t>(i)],
                                 {left, room.y + band * height, right - left, height}});
    }
    return bands * height;
}

}  // namespace

bool is_too_small(Size size)
{
    return size.width < kSmallest.width || size.height < kSmallest.height;
}

Layout layout(Size size, std::span<const std::size_t> wanted)
{
    Layout layout;
    const bool compact = size.height < kCompactHeight;
    const int above = compact ? 1 : 2;
    const int below = compact ? 1 : 2;
    const int body = size.height - above - below;
    if (!compact) {
        layout.description = 1;
        layout.event = size.height - 2;
    }
    layout.keys = size.height - 1;
    layout.framed_table = !compact;
    const int taken = place_gauges(layout, {0, above, size.width, gauge_rows(body)}, wanted);
    layout.table = {0, above + taken, size.width, body - taken};
    return layout;
}

}  // namespace nimba::smi::top
