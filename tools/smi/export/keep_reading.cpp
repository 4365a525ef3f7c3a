// SPDX-License-Identifier: MIT
#include "tools/smi/export/keep_reading.hpp"

#include "tools/smi/memory/snapshot.hpp"

#include <algorithm>
#include <string_view>
#include <utility>

namespace nimba::smi::exporting {
namespace {

// Where an allocation counts among kSegmentNames.
std::size_t segment_index(const Allocation& allocation)
{
    constexpr std::size_t kNone = kSegmentNames.size() - 1;
    const int32_t segment = allocation.segmentid;
    return segment < 0 ? kNone : std::min(static_cast<std::size_t>(segment), kNone - 1);
}

// Whether the map of contexts was read, be it up to what it holds.
bool has_contexts(const ReadingBase& reading)
{
    static constexpr std::string_view kMap = "get_device_pid_maps";
    return std::ranges::none_of(reading.remarks, [](const Failure& remark) {
        return remark.call == kMap && remark.status != ExitStatus::kOk;
    });
}

void keep_names(AdapterFigures& figures, const std::vector<DeviceContext>& contexts)
{
    for (const DeviceContext& context : contexts) {
        if (!context.name.empty()) {
            figures.process_names.insert_or_assign(std::to_string(context.pid), context.name);
        }
    }
}

}  // namespace

void keep_reading(AdapterFigures& figures, ClockReading reading)
{
    figures.state.clocks = std::move(reading);
}

void keep_reading(AdapterFigures& figures, DvfsReading reading)
{
    figures.settings = std::move(reading);
}

void keep_reading(AdapterFigures& figures, const SegmentReading& reading)
{
    figures.state.segments = segment_table(reading);
}

void keep_reading(AdapterFigures& figures, SensorReading reading)
{
    figures.state.sensors = std::move(reading);
}

void keep_reading(AdapterFigures& figures, MemoryReading reading)
{
    if (has_contexts(reading)) {
        figures.contexts = reading.contexts.size();
    }
    keep_names(figures, reading.contexts);
    auto& counts = figures.allocations.emplace();
    for (const Allocation& allocation : reading.allocations) {
        ++counts.at(segment_index(allocation));
    }
    MemorySnapshot memory;
    memory.adapters.push_back(
        {figures.state.adapter, std::move(reading.allocations), Owners{reading.contexts}});
    figures.state.processes = usage_table(memory, std::nullopt);
    figures.state.processes_known = true;
}

void keep_reading(AdapterFigures& figures, LeakReading reading)
{
    keep_names(figures, reading.contexts);
    figures.leaks = std::move(reading.groups);
}

void keep_reading(AdapterFigures& figures, PageTableContents contents)
{
    figures.page_tables = std::move(contents);
}

}  // namespace nimba::smi::exporting
