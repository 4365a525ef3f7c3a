// SPDX-License-Identifier: MIT
#include "tools/smi/ps/render.hpp"

#include "tools/smi/memory/faces.hpp"
#include "tools/smi/text/csv.hpp"
#include "tools/smi/text/json.hpp"
#include "tools/smi/text/size.hpp"
#include "tools/smi/text/table.hpp"

#include <fmt/core.h>

#include <numeric>

namespace nimba::smi {
namespace {

// The column of the number of allocations, behind which come the sizes.
constexpr std::size_t kFirstNumber = 3;

// The segments that hold anything.
std::vector<std::size_t> used_segments(const Usage& total)
{
    std::vector<std::size_t> used;
    for (std::size_t i = 0; i < total.segments.size(); ++i) {
        if (total.segments.at(i) != 0) {
            used.push_back(i);
        }
    }
    return used;
}

// A row: what stands before the sizes, the sizes, and what stands behind them.
Row text_row(Row before, const Usage& usage, const std::vector<std::size_t>& segments,
             const std::string& behind)
{
    before.push_back(std::to_string(usage.allocations));
    for (const std::size_t segment : segments) {
        before.push_back(size_text(usage.segments.at(segment)));
    }
    before.push_back(size_text(usage.bytes));
    before.push_back(behind);
    return before;
}

Row header_row(const std::vector<std::size_t>& segments)
{
    Row row{"SLOT", "DEVICE", "PID", "ALLOCS"};
    for (const std::size_t segment : segments) {
        row.push_back(fmt::format("SEG {}", kSegmentNames.at(segment)));
    }
    row.emplace_back("MEMORY");
    row.emplace_back("PROCESS");
    return row;
}

}  // namespace

Document usage_json(const Usage& usage)
{
    Document segments = Document::object();
    for (std::size_t i = 0; i < kSegmentNames.size(); ++i) {
        segments[kSegmentNames.at(i)] = usage.segments.at(i);
    }
    return {{"allocations", usage.allocations},
            {"bytes", usage.bytes},
            {"segments", std::move(segments)}};
}

Document device_json(const DeviceUsage& device)
{
    Document row{{"slot", device.slot},
                 {"bus_id", device.bus_id},
                 {"device", json_handle(device.device)},
                 {"processes", json_processes(device.processes)}};
    row.update(usage_json(device.usage));
    return row;
}

std::string ps_text(const MemorySnapshot& snapshot, const UsageTable& table)
{
    if (snapshot.adapters.empty()) {
        return {};
    }
    const auto segments = used_segments(table.total);
    std::vector<Row> rows{header_row(segments)};
    for (const DeviceUsage& device : table.devices) {
        rows.push_back(text_row({std::to_string(device.slot), handle_text(device.device),
                                 pids_text(device.processes, "-")},
                                device.usage, segments, names_text(device.processes, "-")));
    }
    rows.push_back(text_row({"all", "", ""}, table.total, segments, ""));
    std::vector<std::size_t> numbers(segments.size() + 2);
    std::iota(numbers.begin(), numbers.end(), kFirstNumber);
    return aligned(rows, numbers);
}

std::string ps_csv(const UsageTable& table)
{
    Row header{"slot", "bus_id", "device", "pid", "process", "allocations", "bytes"};
    for (const char* const segment : kSegmentNames) {
        header.push_back(fmt::format("segment_{}", segment));
    }
    std::vector<Row> rows{std::move(header)};
    for (const DeviceUsage& device : table.devices) {
        Row row{std::to_string(device.slot),       device.bus_id,
                handle_text(device.device),        pids_text(device.processes, ""),
                names_text(device.processes, ""),  std::to_string(device.usage.allocations),
                std::to_string(device.usage.bytes)};
        for (const uint64_t bytes : device.usage.segments) {
            row.push_back(std::to_string(bytes));
        }
        rows.push_back(std::move(row));
    }
    return csv_text(rows);
}

std::string ps_json(const MemorySnapshot& snapshot, const UsageTable& table)
{
    Document devices = Document::array();
    for (const DeviceUsage& device : table.devices) {
        devices.push_back(device_json(device));
    }
    return json_text({{"schema", "nimba-smi.ps.1"},
                      {"adapters", json_adapters(snapshot)},
                      {"devices", std::move(devices)},
                      {"total", usage_json(table.total)},
                      {"errors", json_errors(snapshot.problems)}});
}

}  // namespace nimba::smi
