// SPDX-License-Identifier: MIT
#include "adapter_power_reader.hpp"

#include "memory_segment_reader.hpp"
#include "message.hpp"
#include "number_keys.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <limits>

namespace nimba::sim {
namespace {

constexpr int64_t kMostMegahertz = 100000;
constexpr int64_t kMostMillivolts = 10000;
constexpr int64_t kMostPerSecond = 100000;
constexpr int64_t kMostTurns = 100000;  // of a fan, per minute
constexpr int64_t kPercent = 100;
constexpr int64_t kMostDegrees = 200;
constexpr int64_t kMostMilliseconds = 3600000;
constexpr int64_t kMostMegabytes = 1000000;  // per second
constexpr int64_t kMostNumber = std::numeric_limits<int32_t>::max();
constexpr std::size_t kLongestText = 64;

constexpr std::array<NumberKey<ClockSet>, 4> kClockSetKeys{{
    {"engine", &ClockSet::engine, 0, kMostMegahertz},
    {"video", &ClockSet::video, 0, kMostMegahertz},
    {"memory", &ClockSet::memory, 0, kMostMegahertz},
    {"voltage", &ClockSet::voltage, 0, kMostMillivolts},
}};

constexpr std::array<NumberKey<AdapterClocks>, 5> kClockKeys{{
    {"core", &AdapterClocks::core, 0, kMostMegahertz},
    {"least_engine", &AdapterClocks::least_engine, 0, kMostMegahertz},
    {"greatest_engine", &AdapterClocks::greatest_engine, 0, kMostMegahertz},
    {"least_voltage", &AdapterClocks::least_voltage, 0, kMostMillivolts},
    {"greatest_voltage", &AdapterClocks::greatest_voltage, 0, kMostMillivolts},
}};

constexpr std::array<NumberKey<AdapterActivity>, 4> kActivityKeys{{
    {"load", &AdapterActivity::load, 0, kPercent},
    {"swing", &AdapterActivity::swing, 0, kPercent},
    {"flips", &AdapterActivity::flips, 0, kMostPerSecond},
    {"blits", &AdapterActivity::blits, 0, kMostPerSecond},
}};

constexpr std::array<NumberKey<AdapterCooling>, 4> kCoolingKeys{{
    {"ambient", &AdapterCooling::ambient, 0, kMostDegrees},
    {"rise", &AdapterCooling::rise, 0, kMostDegrees},
    {"least_fan", &AdapterCooling::least_fan, 0, kMostTurns},
    {"greatest_fan", &AdapterCooling::greatest_fan, 0, kMostTurns},
}};

constexpr std::array<NumberKey<AdapterBoard>, 9> kBoardKeys{{
    {"display_ports", &AdapterBoard::display_ports, 0, kMostNumber},
    {"pixel_fillrate", &AdapterBoard::pixel_fillrate, 0, kMostNumber},
    {"texture_fillrate", &AdapterBoard::texture_fillrate, 0, kMostNumber},
    {"pcie_gen", &AdapterBoard::pcie_gen, 0, kMostNumber},
    {"pcie_lanes", &AdapterBoard::pcie_lanes, 0, kMostNumber},
    {"pmp_version", &AdapterBoard::pmp_version, 0, kMostNumber},
    {"release_date", &AdapterBoard::release_date, 0, kMostNumber},
    {"miu_channels", &AdapterBoard::miu_channels, 0, kMostNumber},
    {"slice_mask", &AdapterBoard::slice_mask, 0, kMostNumber},
}};

struct TextKey {
    std::string_view name;
    std::string AdapterBoard::*value;
};

constexpr std::array<TextKey, 7> kBoardTexts{{
    {"driver_version", &AdapterBoard::driver_version},
    {"firmware_version", &AdapterBoard::firmware_version},
    {"firmware_name", &AdapterBoard::firmware_name},
    {"hdmi_resolution", &AdapterBoard::hdmi_resolution},
    {"dp_resolution", &AdapterBoard::dp_resolution},
    {"vga_resolution", &AdapterBoard::vga_resolution},
    {"display_types", &AdapterBoard::display_types},
}};

constexpr auto kClockSetNames = names_of(kClockSetKeys);
constexpr auto kClockNames = names_of(
    kClockKeys,
    std::array<std::string_view, 6>{"mode", "level", "idle", "balance", "lowpower", "performance"});
constexpr auto kActivityNames =
    names_of(kActivityKeys,
             std::array<std::string_view, 4>{"period_ms", "flip_swing", "engines", "bandwidth"});
constexpr auto kCoolingNames =
    names_of(kCoolingKeys, std::array<std::string_view, 2>{"start", "time_constant_ms"});
constexpr auto kBoardNames = names_of(kBoardKeys, names_of(kBoardTexts));

// Rejects a range whose end, the value of `key`, is before its beginning.
void check_range(const TableReader& table, std::string_view key, int64_t greatest, int64_t least)
{
    if (greatest < least) {
        table.reject(key, fmt::format("a whole number from {} on, the least one", least));
    }
}

void read_clock_set(const TableReader& clocks, std::string_view key, ClockSet& set)
{
    if (const auto table = clocks.table(key, kClockSetNames)) {
        read_numbers(*table, kClockSetKeys, set);
    }
}

AdapterClocks read_clocks(const TableReader& table)
{
    AdapterClocks clocks;
    read_numbers(table, kClockKeys, clocks);
    check_range(table, "greatest_engine", clocks.greatest_engine, clocks.least_engine);
    check_range(table, "greatest_voltage", clocks.greatest_voltage, clocks.least_voltage);
    clocks.mode = static_cast<DvfsMode>(
        table.integer_or("mode", 0, kDvfsModes - 1, static_cast<int64_t>(clocks.mode)));
    if (table.has("level")) {
        const auto* const name =
            std::ranges::find(kDvfsLevelNames, table.choice("level", kDvfsLevelNames));
        clocks.level = static_cast<DvfsLevel>(name - kDvfsLevelNames.begin());
    }
    read_clock_set(table, "idle", clocks.idle);
    for (std::size_t level = 0; level < kDvfsLevelNames.size(); ++level) {
        read_clock_set(table, kDvfsLevelNames.at(level), clocks.levels.at(level));
    }
    return clocks;
}

std::chrono::milliseconds read_time(const TableReader& table, std::string_view key,
                                    std::chrono::milliseconds fallback)
{
    return std::chrono::milliseconds{table.integer_or(key, 1, kMostMilliseconds, fallback.count())};
}

// Reads a list of as many numbers as there are.
template <std::size_t Count>
void read_list(const TableReader& table, std::string_view key, int64_t greatest,
               std::array<int64_t, Count>& numbers)
{
    if (!table.has(key)) {
        return;
    }
    const auto read = table.integers(key, 0, greatest);
    if (read.size() != Count) {
        table.reject(key, fmt::format("a list of {} numbers", Count));
    }
    std::ranges::copy(read, numbers.begin());
}

AdapterActivity read_activity(const TableReader& table)
{
    AdapterActivity activity;
    read_numbers(table, kActivityKeys, activity);
    activity.period = read_time(table, "period_ms", activity.period);
    activity.flip_swing = table.integer_or("flip_swing", 0, activity.flips, activity.flip_swing);
    read_list(table, "engines", kPercent, activity.engines);
    read_list(table, "bandwidth", kMostMegabytes, activity.bandwidth);
    return activity;
}

AdapterCooling read_cooling(const TableReader& table)
{
    AdapterCooling cooling;
    read_numbers(table, kCoolingKeys, cooling);
    check_range(table, "greatest_fan", cooling.greatest_fan, cooling.least_fan);
    cooling.time_constant = read_time(table, "time_constant_ms", cooling.time_constant);
    if (table.has("start")) {
        cooling.start = table.integer("start", 0, kMostDegrees);
    }
    return cooling;
}

AdapterBoard read_board(const TableReader& table)
{
    AdapterBoard board;
    read_numbers(table, kBoardKeys, board);
    for (const auto& [key, value] : kBoardTexts) {
        const auto text = table.any_text(key);
        if (text && (has_control_characters(*text) || text->size() > kLongestText)) {
            table.reject(key, fmt::format("a text of one line, without control characters, of {} "
                                          "bytes at most",
                                          kLongestText));
        }
        board.*value = text.value_or(board.*value);
    }
    return board;
}

}  // namespace

AdapterPower read_adapter_power(const TableReader& adapter, bool is_qv)
{
    AdapterPower power;
    if (const auto table = adapter.table("clocks", kClockNames)) {
        power.clocks = read_clocks(*table);
    }
    if (const auto table = adapter.table("activity", kActivityNames)) {
        power.activity = read_activity(*table);
    }
    if (const auto table = adapter.table("cooling", kCoolingNames)) {
        power.cooling = read_cooling(*table);
    }
    if (const auto table = adapter.table("board", kBoardNames)) {
        power.board = read_board(*table);
    }
    power.segments = read_memory_segments(adapter, is_qv);
    return power;
}

}  // namespace nimba::sim
