// SPDX-License-Identifier: MIT
#include "page_tables_reader.hpp"

#include "driver/synthetic_tables.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace nimba::sim {
namespace {

constexpr std::array<std::string_view, 7> kKeys{"level0",      "level1",   "level2",  "entries",
                                                "large_pages", "segments", "snooping"};

constexpr uint64_t kMostEntries = 1000000;
constexpr uint64_t kDefaultEntries = 32;  // per sub-table
constexpr int64_t kGreatestSegment = 65535;

uint64_t read_number(const TableReader& table, std::string_view key, uint64_t least,
                     uint64_t greatest, uint64_t fallback)
{
    return static_cast<uint64_t>(table.integer_or(key, static_cast<int64_t>(least),
                                                  static_cast<int64_t>(greatest),
                                                  static_cast<int64_t>(fallback)));
}

std::vector<int64_t> read_segments(const TableReader& table)
{
    if (!table.has("segments")) {
        return {0};
    }
    auto segments = table.integers("segments", 0, kGreatestSegment);
    if (segments.empty()) {
        table.reject("segments", "at least one segment");
    }
    return segments;
}

}  // namespace

std::optional<SyntheticTables> read_page_tables(const TableReader& context)
{
    const auto table = context.table("page_tables", kKeys);
    if (!table) {
        return std::nullopt;
    }
    const auto most_below = [](uint64_t above) {
        return std::min(above * kTablesPerTable, kMostEntries);
    };
    SyntheticTables tables;
    tables.level0 = read_number(*table, "level0", 1, kMostSyntheticLevel0, 1);
    tables.level1 = read_number(*table, "level1", 0, most_below(tables.level0), tables.level0);
    tables.level2 = read_number(*table, "level2", 0, most_below(tables.level1), tables.level1);
    tables.large_pages = read_number(*table, "large_pages", 0, 100, 0);
    tables.snooping = read_number(*table, "snooping", 0, 100, 0);
    tables.segments = read_segments(*table);
    const uint64_t most = std::min(most_entries(tables), kMostEntries);
    tables.entries =
        read_number(*table, "entries", 0, most, std::min(tables.level2 * kDefaultEntries, most));
    return tables;
}

}  // namespace nimba::sim
