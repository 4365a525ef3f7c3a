// SPDX-License-Identifier: MIT
// What an adapter does and how: its clocks, its load, its sensors, its memory, its versions.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nimba::sim {

// What the engines run with, in MHz and mV.
struct ClockSet {
    int64_t engine = 0;
    int64_t video = 0;
    int64_t memory = 0;
    int64_t voltage = 0;  // of the engine
};

enum class DvfsLevel : std::size_t { kBalance, kLowPower, kPerformance };

inline constexpr std::array<std::string_view, 3> kDvfsLevelNames{"balance", "lowpower",
                                                                 "performance"};

// Whether clocks and voltage stay what they are, follow level and load, or are those of the level.
enum class DvfsMode : uint32_t { kManual, kAutomatic, kLevel };

inline constexpr uint32_t kDvfsModes = 3;

struct AdapterClocks {
    DvfsMode mode = DvfsMode::kAutomatic;  // in the beginning
    DvfsLevel level = DvfsLevel::kBalance;
    ClockSet idle{300, 200, 400, 700};  // without any load, in automatic mode
    std::array<ClockSet, kDvfsLevelNames.size()> levels{
        {{800, 500, 1600, 900}, {500, 300, 800, 800}, {1200, 700, 2000, 1050}}};
    int64_t core = 600;
    int64_t least_engine = 100;  // what can be set by hand
    int64_t greatest_engine = 2000;
    int64_t least_voltage = 600;
    int64_t greatest_voltage = 1300;
};

inline constexpr std::size_t kBandwidthWords = 12;
inline constexpr std::size_t kUsageWords = 13;
inline constexpr std::size_t kFirstUsageWord = 2;  // of those that an engine has
inline constexpr std::size_t kEngineCount = 8;

struct AdapterActivity {
    int64_t load = 40;   // percent
    int64_t swing = 30;  // how far the load goes up and down, in percent of full load
    std::chrono::milliseconds period{20000};
    int64_t flips = 60;      // per second
    int64_t flip_swing = 0;  // how far that goes down as the load goes up; `flips` at most
    int64_t blits = 60;      // per second
    // At full load: percent of each engine, MB/s of each word.
    std::array<int64_t, kEngineCount> engines{100, 25, 50, 40, 10, 30, 20, 15};
    std::array<int64_t, kBandwidthWords> bandwidth{8000, 6000, 4000, 3000, 2400, 1600,
                                                   1200, 800,  600,  400,  200,  100};
};

struct AdapterCooling {
    int64_t ambient = 25;          // degrees Celsius
    int64_t rise = 50;             // degrees at full load
    std::optional<int64_t> start;  // nothing: what the load leads to
    std::chrono::milliseconds time_constant{10000};
    int64_t least_fan = 800;  // turns per minute
    int64_t greatest_fan = 3200;
};

// A segment of memory that allocations can be in. Sizes are in bytes.
struct MemorySegment {
    std::size_t id = 0;
    uint64_t total = 0;
    uint64_t used = 0;  // by others than the allocations
};

inline constexpr std::size_t kMostSegments = 16;

// What does not change. A line of /proc/gpuinfo_<card> whose text is empty is not there.
struct AdapterBoard {
    std::string driver_version = "1.2.a";
    std::string firmware_version = "8.f.0.1c";
    std::string firmware_name = "Simulated adapter";
    std::string hdmi_resolution = "3840 x 2160@60";
    std::string dp_resolution = "7680 x 4320@30";
    std::string vga_resolution = "1920 x 1080@75";
    std::string display_types = "VGA HDMI DP";
    int64_t display_ports = 3;
    int64_t pixel_fillrate = 9600;     // megapixels per second
    int64_t texture_fillrate = 19200;  // megatexels per second
    int64_t pcie_gen = 4;
    int64_t pcie_lanes = 8;
    int64_t pmp_version = 3;
    int64_t release_date = 20240315;  // its decimal digits are year, month and day
    int64_t miu_channels = 2;
    int64_t slice_mask = 3;
};

struct AdapterPower {
    AdapterClocks clocks;
    AdapterActivity activity;
    AdapterCooling cooling;
    AdapterBoard board;
    std::vector<MemorySegment> segments;  // by id, none twice
};

}  // namespace nimba::sim
