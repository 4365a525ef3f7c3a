// SPDX-License-Identifier: MIT
// The figures of an adapter that are plotted.
#pragma once

#include "tools/smi/snapshot/adapter_state.hpp"
#include "tools/smi/top/canvas.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace nimba::smi::top {

// Where the scale of a gauge ends.
enum class ScaleKind : uint8_t {
    kHundred,  // at 100
    kTotal,    // at what is there in all, or as kOpen when that is not known
    kOpen,     // above the largest value that is shown
};

// Gauges that are shown together.
enum class GaugeSet : uint8_t { kEngines, kLoad, kClocks };

struct Gauge {
    const char* title;
    const char* brief;  // the title where there is no room for it
    GaugeSet set;
    ScaleKind scale;
    std::optional<Ink> ink;  // of its area; none: by height, from little to much
    int rank;                // from 0 on: which are left out where there is no room for all
    std::optional<double> (*value)(const AdapterState& adapter);
    std::optional<double> (*total)(const AdapterState& adapter);  // null without one
    std::string (*text)(double value);
};

inline constexpr std::size_t kGaugeCount = 8;

// In the order in which they stand side by side.
std::span<const Gauge, kGaugeCount> gauges();

}  // namespace nimba::smi::top
