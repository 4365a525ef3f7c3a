// SPDX-License-Identifier: MIT
#include "tools/smi/overview/process_table.hpp"

#include "tools/smi/overview/line.hpp"
#include "tools/smi/text/size.hpp"
#include "tools/smi/text/table.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

namespace nimba::smi {
namespace {

constexpr const char* kUnknown = "n/a";

// The first process, and how many more hold the device.
std::string pid_text(const DeviceUsage& device)
{
    if (device.processes.empty()) {
        return "-";
    }
    const std::string more =
        device.processes.size() > 1 ? fmt::format(" +{}", device.processes.size() - 1) : "";
    return std::to_string(device.processes.front().pid) + more;
}

Row device_row(const DeviceUsage& device)
{
    return {std::to_string(device.slot), pid_text(device), size_text(device.usage.bytes),
            std::to_string(device.usage.allocations), names_text(device.processes, "-")};
}

// The devices of all adapters; those of an adapter are in this order.
std::vector<DeviceUsage> largest_first(const MachineSnapshot& snapshot)
{
    std::vector<DeviceUsage> devices;
    for (const AdapterState& adapter : snapshot.adapters) {
        std::ranges::copy(adapter.processes.devices, std::back_inserter(devices));
    }
    std::ranges::stable_sort(devices, std::greater{},
                             [](const DeviceUsage& device) { return device.usage.bytes; });
    return devices;
}

// The lines of a table, each no wider than it may be.
std::string cut_lines(std::string_view table, const OverviewStyle& style)
{
    std::string text;
    while (!table.empty()) {
        const auto end = table.find('\n');
        text += Line{style, style.columns - 1}.fill_to(1).add(table.substr(0, end)).text();
        table.remove_prefix(end + 1);
    }
    return text;
}

}  // namespace

std::string process_table_text(const MachineSnapshot& snapshot,
                               const std::optional<std::size_t>& top, const OverviewStyle& style)
{
    const std::vector<DeviceUsage> devices = largest_first(snapshot);
    const std::size_t shown = std::min(devices.size(), top.value_or(devices.size()));
    std::vector<Row> rows{{"SLOT", "PID", "MEMORY", "ALLOCS", "PROCESS"}};
    for (std::size_t i = 0; i < shown; ++i) {
        rows.push_back(device_row(devices[i]));
    }
    for (const AdapterState& adapter : snapshot.adapters) {
        if (!adapter.processes_known) {
            rows.push_back(
                {std::to_string(adapter.adapter.slot), kUnknown, kUnknown, kUnknown, kUnknown});
        }
    }
    std::string text = Line{style, style.columns - 1}
                           .rule_to(2)
                           .add(" Processes")
                           .rule_to(style.columns - 1)
                           .text();
    if (rows.size() == 1) {
        return text + cut_lines("none\n", style);
    }
    text += cut_lines(aligned(rows, {1, 2, 3}), style);
    if (shown < devices.size()) {
        text += cut_lines(fmt::format("and {} more\n", devices.size() - shown), style);
    }
    return text;
}

}  // namespace nimba::smi
