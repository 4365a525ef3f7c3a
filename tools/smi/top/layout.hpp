// SPDX-License-Identifier: MIT
// What has room where on a screen.
#pragma once

#include "tools/smi/top/canvas.hpp"
#include "tools/smi/top/gauges.hpp"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace nimba::smi::top {

inline constexpr Size kSmallest{40, 10};

struct PlacedGauge {
    std::size_t gauge = 0;  // its number in gauges()
    Area area;

    bool operator==(const PlacedGauge&) const = default;
};

// The rows of the screen from above: title, description, gauges, table, event, keys.
struct Layout {
    std::optional<int> description;
    std::vector<PlacedGauge> gauges;
    Area table;
    bool framed_table = false;
    std::optional<int> event;  // without a row of its own, an event takes that of the keys
    int keys = 0;
};

bool is_too_small(Size size);

// `wanted`: numbers of gauges, in their order. Where there is no room for all of them, those of the
// lowest ranks stay.
Layout layout(Size size, std::span<const std::size_t> wanted);

}  // namespace nimba::smi::top
