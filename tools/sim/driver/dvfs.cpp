// SPDX-License-Identifier: MIT
#include "driver/dvfs.hpp"

#include "driver/command_text.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace nimba::sim {
namespace {

constexpr std::array<std::string_view, 2> kGatingNames{"pg", "cg"};
constexpr std::array<std::string_view, 3> kGatedNames{"3d", "vcp", "vpp"};
constexpr std::array<std::string_view, 4> kWatchedNames{"gfx", "vcp0", "vcp1", "vpp"};
constexpr std::array<std::string_view, 3> kParameterNames{"checksize", "h_threshold",
                                                          "l_threshold"};

constexpr std::array<uint16_t, 2> kFirstGating{0x64, 0x10};            // by kind
constexpr std::array<uint32_t, 3> kFirstParameters{0x40, 0x50, 0x1e};  // by parameter

constexpr uint32_t kGreatestGating = 0xffff;
constexpr uint32_t kLeastWidenedGating = 0xffff8000;  // negative in 16 bits

// "0xVALUE" and the newline.
std::optional<uint32_t> prefixed_number(std::string_view command)
{
    if (!take_word(command, "0x")) {
        return std::nullopt;
    }
    const auto number = take_hexadecimal(command);
    return command == "\n" ? number : std::nullopt;
}

bool is_between(int64_t number, int64_t least, int64_t greatest)
{
    return number >= least && number <= greatest;
}

}  // namespace

Dvfs::Dvfs(const AdapterClocks& description)
    : description_{description}, mode_{description.mode}, level_{description.level}
{
    gating_.fill(kFirstGating);
    parameters_.fill(kFirstParameters);
    if (mode_ == DvfsMode::kManual) {
        held_engine_ = unheld_clocks().engine;
        held_voltage_ = unheld_clocks().voltage;
    }
}

ClockSet Dvfs::unheld_clocks() const
{
    const ClockSet& level = description_.levels.at(static_cast<std::size_t>(level_));
    if (mode_ != DvfsMode::kAutomatic) {
        return level;
    }
    const ClockSet& idle = description_.idle;
    const auto between = [this](int64_t low, int64_t high) {
        return low + std::lround(static_cast<double>(high - low) * load_ / 100);
    };
    return {between(idle.engine, level.engine), between(idle.video, level.video),
            between(idle.memory, level.memory), between(idle.voltage, level.voltage)};
}

ClockSet Dvfs::clocks() const
{
    ClockSet clocks = unheld_clocks();
    clocks.engine = held_engine_.value_or(clocks.engine);
    clocks.voltage = held_voltage_.value_or(clocks.voltage);
    return clocks;
}

std::string Dvfs::power_mode_text() const
{
    return fmt::format("power_mode:{:#x}\n", power_mode_);
}

std::string Dvfs::gating_text() const
{
    std::string text;
    for (std::size_t engine = 0; engine < kGatedEngines; ++engine) {
        for (std::size_t kind = 0; kind < kGatingKinds; ++kind) {
            fmt::format_to(std::back_inserter(text), "{}_{}:{:#x}\n", kGatingNames.at(kind),
                           kGatedNames.at(engine), gating_.at(engine).at(kind));
        }
    }
    return text;
}

std::string Dvfs::mode_text() const
{
    return fmt::format("dvfs_mode:{:#x}\n", static_cast<uint32_t>(mode_));
}

std::string Dvfs::parameters_text() const
{
    std::string text;
    for (std::size_t engine = 0; engine < kWatchedEngines; ++engine) {
        for (std::size_t parameter = 0; parameter < kWatchParameters; ++parameter) {
            fmt::format_to(std::back_inserter(text), "{}_dvfs_{}:{:#x}\n", kWatchedNames.at(engine),
                           kParameterNames.at(parameter), parameters_.at(engine).at(parameter));
        }
    }
    return text;
}

std::string Dvfs::clock_voltage_text() const
{
    const ClockSet now = clocks();
    return fmt::format("gfx_clock:{}\ngfx_voltage:{}\n", now.engine, now.voltage);
}

std::string Dvfs::level_text() const
{
    return fmt::format("dvfs_level:{}\n", kDvfsLevelNames.at(static_cast<std::size_t>(level_)));
}

bool Dvfs::write_power_mode(std::string_view command)
{
    const auto mode = prefixed_number(command);
    power_mode_ = mode.value_or(power_mode_);
    return mode.has_value();
}

bool Dvfs::write_gating(std::string_view command)
{
    const auto kind = take_index(command, kGatingKinds);
    const auto engine = take_index(command, kGatedEngines);
    const auto value = take_hexadecimal(command);
    if (!kind || !engine || !value || command != "\n" ||
        (*value > kGreatestGating && *value < kLeastWidenedGating)) {
        return false;
    }
    gating_.at(*engine).at(*kind) = static_cast<uint16_t>(*value);
    return true;
}

bool Dvfs::write_mode(std::string_view command)
{
    const auto mode = prefixed_number(command);
    if (!mode || *mode >= kDvfsModes) {
        return false;
    }
    const ClockSet now = clocks();
    mode_ = static_cast<DvfsMode>(*mode);
    const bool manual = mode_ == DvfsMode::kManual;
    held_engine_ = manual ? std::optional{now.engine} : std::nullopt;
    held_voltage_ = manual ? std::optional{now.voltage} : std::nullopt;
    return true;
}

bool Dvfs::write_parameter(std::string_view command)
{
    const auto engine = take_index(command, kWatchedEngines);
    const auto parameter = take_index(command, kWatchParameters);
    const auto value = take_hexadecimal(command);
    if (!engine || !parameter || !value || command != "\n") {
        return false;
    }
    parameters_.at(*engine).at(*parameter) = *value;
    return true;
}

bool Dvfs::write_clock_or_voltage(std::string_view command)
{
    const bool is_clock = take_word(command, "c 0 ");
    if (!is_clock && !take_word(command, "v 0 ")) {
        return false;
    }
    const auto value = take_decimal(command);
    if (!value || command != "\n") {
        return false;
    }
    if (is_clock ? !is_between(*value, description_.least_engine, description_.greatest_engine)
                 : !is_between(*value, description_.least_voltage, description_.greatest_voltage)) {
        return false;
    }
    (is_clock ? held_engine_ : held_voltage_) = *value;
    return true;
}

bool Dvfs::write_level(std::string_view command)
{
    const auto* const level = std::ranges::find_if(kDvfsLevelNames, [&](std::string_view name) {
        return command == fmt::format("{}\n", name);
    });
    if (level == kDvfsLevelNames.end()) {
        return false;
    }
    level_ = static_cast<DvfsLevel>(level - kDvfsLevelNames.begin());
    if (mode_ != DvfsMode::kManual) {
        held_engine_.reset();
        held_voltage_.reset();
    }
    return true;
}

}  // namespace nimba::sim
