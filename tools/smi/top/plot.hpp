// SPDX-License-Identifier: MIT
// Values over time as an area of characters.
#pragma once

#include "tools/smi/top/history.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace nimba::smi::top {

// What an area is made of.
enum class Marks : uint8_t {
    kBraille,  // two samples in a column, four heights in a row
    kBlocks,   // one sample in a column, eight heights in a row
    kAscii,    // one sample in a column, three heights in a row
};

// Samples that stand in one column.
std::size_t samples_per_column(Marks marks);

struct PlotSize {
    std::size_t width = 0;
    std::size_t height = 0;
};

// The rows of an area from the top, each as wide as `size`. The newest sample is at the right end.
// Values go from 0 at the bottom to `top`; those beyond stand at the border. A value always leaves
// a mark in the lowest row, so that 0 differs from a gap.
std::vector<std::u32string> plot(const History& history, double top, PlotSize size, Marks marks);

// The end of a scale that has room for `largest`: 1, 2, 3 or 5 times a power of ten; at least 10.
double scale_end(double largest);

}  // namespace nimba::smi::top
