// SPDX-License-Identifier: MIT
// What one scrape brought: the one model behind all faces of the exporter.
#pragma once

#include "tools/smi/dvfs/reading.hpp"
#include "tools/smi/exit_status.hpp"
#include "tools/smi/memory/reading.hpp"
#include "tools/smi/pagetable/record.hpp"
#include "tools/smi/snapshot/adapter_state.hpp"
#include "tools/smi/worker/payload.hpp"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nimba::smi::exporting {

using Seconds = std::chrono::duration<double>;

// How a collector fared.
struct CollectorRun {
    std::string_view collector;
    bool success = false;
    std::optional<Seconds> duration{};  // none: there was no time left for it

    bool operator==(const CollectorRun&) const = default;
};

// An adapter. What could not be read, or was not asked for, has no value.
struct AdapterFigures {
    AdapterState state;
    std::optional<DvfsReading> settings;
    std::optional<std::size_t> contexts;
    std::optional<std::array<uint64_t, kSegmentNames.size()>> allocations;  // by segment
    std::optional<std::vector<LeakGroup>> leaks;
    std::optional<PageTableContents> page_tables;
    std::map<std::string, std::string> process_names;  // by id: those that hold a device
    std::vector<CollectorRun> runs;
    uint64_t workers_replaced = 0;  // since the exporter started
    std::vector<Problem> problems;
    std::vector<Problem> denied;  // that are none: what the user may not read is to be left out
};

struct MachineFigures {
    std::string tool_version;
    std::optional<LibraryVersion> library;
    std::optional<std::size_t> adapters_found;
    std::vector<AdapterFigures> adapters;  // in slot order
    std::vector<CollectorRun> runs;        // of the machine's collectors
    uint64_t workers_replaced = 0;         // in them, since the exporter started
    Seconds duration{};
    std::vector<Problem> problems;  // of the machine
};

}  // namespace nimba::smi::exporting
