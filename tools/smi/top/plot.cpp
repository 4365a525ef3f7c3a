// SPDX-License-Identifier: MIT
#include "tools/smi/top/plot.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

namespace nimba::smi::top {
namespace {

constexpr std::size_t kBrailleHeights = 4;
constexpr char32_t kBraille = 0x2800;
constexpr std::u32string_view kBlocks = U" ▁▂▃▄▅▆▇█";
constexpr std::u32string_view kAscii = U" .:|";

// The dots of a braille character that fill it from below to each height, in its left and in its
// right column.
constexpr std::array<char32_t, kBrailleHeights + 1> kLeftDots{0, 0x40, 0x44, 0x46, 0x47};
constexpr std::array<char32_t, kBrailleHeights + 1> kRightDots{0, 0x80, 0xA0, 0xB0, 0xB8};

std::size_t heights_per_row(Marks marks)
{
    switch (marks) {
        case Marks::kBraille:
            return kBrailleHeights;
        case Marks::kBlocks:
            return kBlocks.size() - 1;
        case Marks::kAscii:
            break;
    }
    return kAscii.size() - 1;
}

// How high the mark of a sample is, from 1 to `heights`; 0 for a gap.
std::size_t height_of(const std::optional<double>& value, double top, std::size_t heights)
{
    if (!value) {
        return 0;
    }
    const double share = std::clamp(*value / top, 0.0, 1.0);
    const auto height = static_cast<std::size_t>(std::lround(share * static_cast<double>(heights)));
    return std::max<std::size_t>(height, 1);
}

// The part of a height that is in the row which begins at `below`.
std::size_t part_in_row(std::size_t height, std::size_t below, std::size_t row_heights)
{
    return height <= below ? 0 : std::min(height - below, row_heights);
}

char32_t mark(std::size_t left, std::size_t right, Marks marks)
{
    switch (marks) {
        case Marks::kBraille:
            return left + right == 0 ? U' ' : kBraille + kLeftDots.at(left) + kRightDots.at(right);
        case Marks::kBlocks:
            return kBlocks.at(right);
        case Marks::kAscii:
            break;
    }
    return kAscii.at(right);
}

}  // namespace

std::size_t samples_per_column(Marks marks)
{
    return marks == Marks::kBraille ? 2 : 1;
}

std::vector<std::u32string> plot(const History& history, double top, PlotSize size, Marks marks)
{
    const std::size_t per_row = heights_per_row(marks);
    const std::size_t per_column = samples_per_column(marks);
    const std::size_t heights = per_row * size.height;
    std::vector<std::u32string> rows(size.height, std::u32string(size.width, U' '));
    for (std::size_t column = 0; column < size.width; ++column) {
        // The younger sample of the column is the right one.
        const std::size_t age = (size.width - 1 - column) * per_column;
        const std::size_t right = height_of(history.at_age(age), top, heights);
        const std::size_t left = height_of(history.at_age(age + per_column - 1), top, heights);
        for (std::size_t row = 0; row < size.height; ++row) {
            const std::size_t below = (size.height - 1 - row) * per_row;
            rows[row][column] =
                mark(part_in_row(left, below, per_row), part_in_row(right, below, per_row), marks);
        }
    }
    return rows;
}

double scale_end(double largest)
{
    double power = 10;
    while (std::isfinite(largest) && power * 10 <= largest) {
        power *= 10;
    }
    for (const double factor : {1.0, 2.0, 3.0, 5.0}) {
        if (largest <= power * factor) {
            return power * factor;
        }
    }
    return power * 10;
}

}  // namespace nimba::smi::top
