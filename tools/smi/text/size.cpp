// SPDX-License-Identifier: MIT
#include "tools/smi/text/size.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>

namespace nimba::smi {
namespace {

constexpr double kUnit = 1024;
constexpr std::array<std::string_view, 5> kUnits{"B", "KiB", "MiB", "GiB", "TiB"};

std::string in_small_letters(std::string_view text)
{
    std::string small{text};
    std::ranges::transform(small, small.begin(), [](unsigned char c) { return std::tolower(c); });
    return small;
}

// The power of 1024 that a unit stands for.
std::optional<int> power_of(std::string_view unit)
{
    const std::string small = in_small_letters(unit);
    if (small.empty()) {
        return 0;
    }
    for (std::size_t power = 0; power < kUnits.size(); ++power) {
        const std::string name = in_small_letters(kUnits[power]);
        if (small == name || small == name.substr(0, 1)) {
            return static_cast<int>(power);
        }
    }
    return std::nullopt;
}

}  // namespace

std::string size_text(uint64_t bytes)
{
    auto size = static_cast<double>(bytes);
    std::size_t unit = 0;
    // What would be shown as 1024.0 is shown in the next unit.
    while (unit + 1 < kUnits.size() && std::round(size * 10) >= kUnit * 10) {
        size /= kUnit;
        ++unit;
    }
    const bool whole = size == std::floor(size);
    return whole ? fmt::format("{:.0f} {}", size, kUnits[unit])
                 : fmt::format("{:.1f} {}", size, kUnits[unit]);
}

std::optional<uint64_t> parse_size(std::string_view text)
{
    double number = 0;
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
    if (error != std::errc{} || text.front() == '-' || !std::isfinite(number)) {
        return std::nullopt;
    }
    std::string_view unit = text.substr(static_cast<std::size_t>(end - text.data()));
    unit.remove_prefix(unit.starts_with(' ') ? 1 : 0);
    const auto power = power_of(unit);
    const double bytes = power ? std::round(number * std::pow(kUnit, *power)) : -1;
    constexpr double kTooMany = 18446744073709551616.0;  // 2 to the power of 64
    return bytes >= 0 && bytes < kTooMany ? std::optional(static_cast<uint64_t>(bytes))
                                          : std::nullopt;
}

}  // namespace nimba::smi
