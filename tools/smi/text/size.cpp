// SPDX-License-Identifier: MIT
#include "tools/smi/text/size.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>

namespace nimba::smi {
namespace {

constexpr double kUnit = 1024;
constexpr std::array<std::string_view, 5> kUnits{"B", "KiB", "MiB", "GiB", "TiB"};

struct UnitName {
    std::string_view name;
    SizeUnit unit;
    double bytes;
};

constexpr std::array kUnitNames{
    UnitName{"auto", SizeUnit::kAuto, 0},    UnitName{"B", SizeUnit::kB, 1},
    UnitName{"KiB", SizeUnit::kKiB, 0x1p10}, UnitName{"MiB", SizeUnit::kMiB, 0x1p20},
    UnitName{"GiB", SizeUnit::kGiB, 0x1p30}, UnitName{"kB", SizeUnit::kKB, 1e3},
    UnitName{"MB", SizeUnit::kMB, 1e6},      UnitName{"GB", SizeUnit::kGB, 1e9},
};

SizeUnit chosen = SizeUnit::kAuto;

// Whole numbers as they are, and others with one decimal place.
std::string number_text(double number, std::string_view unit)
{
    return number == std::floor(number) ? fmt::format("{:.0f} {}", number, unit)
                                        : fmt::format("{:.1f} {}", number, unit);
}

std::string size_in_unit(uint64_t bytes, const UnitName& unit)
{
    constexpr double kLeastShown = 0.05;
    if (unit.unit == SizeUnit::kB) {
        return fmt::format("{} B", bytes);
    }
    const double number = static_cast<double>(bytes) / unit.bytes;
    return bytes != 0 && number < kLeastShown ? fmt::format("<0.1 {}", unit.name)
                                              : number_text(number, unit.name);
}

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

std::optional<SizeUnit> parse_size_unit(std::string_view text)
{
    const auto* const known = std::ranges::find(kUnitNames, text, &UnitName::name);
    return known == kUnitNames.end() ? std::nullopt : std::optional(known->unit);
}

void choose_size_unit(SizeUnit unit)
{
    chosen = unit;
}

SizeUnit chosen_size_unit()
{
    return chosen;
}

std::string size_text(uint64_t bytes)
{
    return size_text(bytes, chosen);
}

std::string size_text(uint64_t bytes, SizeUnit unit)
{
    if (unit != SizeUnit::kAuto) {
        return size_in_unit(bytes, *std::ranges::find(kUnitNames, unit, &UnitName::unit));
    }
    auto size = static_cast<double>(bytes);
    std::size_t power = 0;
    // What would be shown as 1024.0 is shown in the next unit.
    while (power + 1 < kUnits.size() && std::round(size * 10) >= kUnit * 10) {
        size /= kUnit;
        ++power;
    }
    return number_text(size, kUnits.at(power));
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
