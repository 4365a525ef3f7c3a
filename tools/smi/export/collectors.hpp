// SPDX-License-Identifier: MIT
// The parts of a scrape, each with a deadline and a fate of its own.
#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace nimba::smi::exporting {

// What is asked of each adapter, in this order.
enum class Collector : uint8_t {
    kSummary,
    kClocks,
    kSettings,
    kSegments,
    kSensors,
    kCounters,
    kMemory,
    kLeaks,
    kPageTables,
};

// By Collector: the names that users and series have.
inline constexpr std::array<std::string_view, 9> kCollectorNames{
    "summary",  "clocks", "settings", "segments",   "sensors",
    "counters", "memory", "leaks",    "pagetables",
};

// The collectors of the machine.
inline constexpr std::string_view kLibraryCollector = "library";
inline constexpr std::string_view kDiscoveryCollector = "discovery";

using CollectorSet = std::bitset<kCollectorNames.size()>;

constexpr std::size_t index_of(Collector collector)
{
    return static_cast<std::size_t>(collector);
}

// "leaks,pagetables": those of that name. Nothing when one is none.
std::optional<CollectorSet> parse_collectors(std::string_view text);

}  // namespace nimba::smi::exporting
