// SPDX-License-Identifier: MIT
#include "memory_module_reader.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace nimba::sim {
namespace {

constexpr std::array<std::string_view, 8> kMemoryModuleKeys{
    "locator", "channel", "bank_locator", "type", "total_width", "data_width", "speed", "size_mib"};

struct MemoryType {
    std::string_view name;
    uint8_t number;
};

constexpr std::array kMemoryTypes{
    MemoryType{"unknown", 0x02}, MemoryType{"SDRAM", 0x0F},  MemoryType{"DDR", 0x12},
    MemoryType{"DDR2", 0x13},    MemoryType{"DDR3", 0x18},   MemoryType{"DDR4", 0x1A},
    MemoryType{"DDR5", 0x22},    MemoryType{"LPDDR", 0x1B},  MemoryType{"LPDDR2", 0x1C},
    MemoryType{"LPDDR3", 0x1D},  MemoryType{"LPDDR4", 0x1E}, MemoryType{"LPDDR5", 0x23}};

constexpr std::size_t kMostModules = 64;
constexpr std::size_t kLongestText = 64;
constexpr int64_t kGreatestWord = 65534;  // what SMBIOS has another meaning for is above
constexpr int64_t kGreatestSize = 2147483647;

constexpr uint8_t kDefaultType = 0x1A;
constexpr int64_t kDefaultWidth = 64;
constexpr int64_t kDefaultSpeed = 3200;
constexpr int64_t kDefaultSize = 8192;
constexpr std::size_t kDefaultModules = 2;

// Numbers the modules, in all and by channel.
struct Places {
    std::size_t modules = 0;
    std::map<char, int> banks;
};

MemoryModule default_module(const Places& places)
{
    return {fmt::format("DIMM {}", places.modules),
            "",
            kDefaultType,
            kDefaultWidth,
            kDefaultWidth,
            kDefaultSpeed,
            kDefaultSize};
}

// The channels of a machine that does not say which ones.
char default_channel(const Places& places)
{
    return places.modules % 2 == 0 ? 'A' : 'B';
}

std::string bank_on(char channel, Places& places)
{
    return fmt::format("BANK {} CHANNEL {}", places.banks[channel]++, channel);
}

// What SMBIOS can say, and what stays as it is when it is shown.
std::string read_text(const TableReader& reader, std::string_view key, const std::string& fallback)
{
    std::string text = reader.any_text(key).value_or(fallback);
    const auto is_fit = [](char letter) { return letter >= ' ' && letter <= '~'; };
    if (text.size() > kLongestText || !std::ranges::all_of(text, is_fit)) {
        reader.reject(
            key, fmt::format("a text of {} ASCII characters at most, without control characters",
                             kLongestText));
    }
    return text;
}

char read_channel(const TableReader& reader, const Places& places)
{
    if (!reader.has("channel")) {
        return default_channel(places);
    }
    const std::string channel = reader.text("channel");
    if (channel.size() != 1 || channel.front() < 'A' || channel.front() > 'Z') {
        reader.reject("channel", "a letter from \"A\" to \"Z\"");
    }
    return channel.front();
}

std::string read_bank_locator(const TableReader& reader, Places& places)
{
    if (!reader.has("bank_locator")) {
        return bank_on(read_channel(reader, places), places);
    }
    if (reader.has("channel")) {
        reader.reject("channel", "no such key beside 'bank_locator'");
    }
    return read_text(reader, "bank_locator", "");
}

uint8_t read_type(const TableReader& reader)
{
    std::array<std::string_view, kMemoryTypes.size()> names;
    std::ranges::transform(kMemoryTypes, names.begin(), &MemoryType::name);
    const std::string name = reader.choice("type", names);
    return std::ranges::find(kMemoryTypes, name, &MemoryType::name)->number;
}

MemoryModule read_memory_module(const TableReader& reader, Places& places)
{
    MemoryModule module = default_module(places);
    module.locator = read_text(reader, "locator", module.locator);
    module.bank_locator = read_bank_locator(reader, places);
    if (reader.has("type")) {
        module.type = read_type(reader);
    }
    const auto word = [&](std::string_view key, int64_t fallback) {
        return static_cast<uint16_t>(reader.integer_or(key, 0, kGreatestWord, fallback));
    };
    module.data_width = word("data_width", kDefaultWidth);
    module.total_width = word("total_width", module.data_width);
    module.speed = word("speed", kDefaultSpeed);
    module.size =
        static_cast<uint32_t>(reader.integer_or("size_mib", 0, kGreatestSize, kDefaultSize));
    ++places.modules;
    return module;
}

std::vector<MemoryModule> default_modules()
{
    Places places;
    std::vector<MemoryModule> modules;
    for (; places.modules < kDefaultModules; ++places.modules) {
        MemoryModule& module = modules.emplace_back(default_module(places));
        module.bank_locator = bank_on(default_channel(places), places);
    }
    return modules;
}

}  // namespace

std::vector<MemoryModule> read_memory_modules(const TableReader& machine)
{
    if (!machine.has("memory_module")) {
        return default_modules();
    }
    const auto tables = machine.tables("memory_module", kMemoryModuleKeys);
    if (tables.size() > kMostModules) {
        machine.reject("memory_module", fmt::format("{} tables at most", kMostModules));
    }
    Places places;
    std::vector<MemoryModule> modules;
    modules.reserve(tables.size());
    for (const TableReader& table : tables) {
        modules.push_back(read_memory_module(table, places));
    }
    return modules;
}

}  // namespace nimba::sim
