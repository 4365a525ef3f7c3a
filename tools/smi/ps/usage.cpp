// SPDX-License-Identifier: MIT
#include "tools/smi/ps/usage.hpp"

#include <algorithm>
#include <functional>
#include <map>

namespace nimba::smi {
namespace {

// Where an allocation counts among the segments' names.
std::size_t segment_index(int32_t segment)
{
    constexpr std::size_t kNone = kSegmentNames.size() - 1;
    return segment < 0 ? kNone
                       : std::min<std::size_t>(static_cast<std::size_t>(segment), kNone - 1);
}

void append_devices(const AdapterMemory& memory, std::vector<DeviceUsage>& devices)
{
    std::map<uint32_t, Usage> usages;
    for (const auto& [device, processes] : memory.owners.devices()) {
        usages[device];
    }
    for (const Allocation& allocation : memory.allocations) {
        usages[unsigned_bits(allocation.device)].add(allocation);
    }
    for (const auto& [device, usage] : usages) {
        const auto processes = memory.owners.of(device);
        devices.push_back({memory.adapter.slot,
                           memory.adapter.bus_id,
                           device,
                           {processes.begin(), processes.end()},
                           usage});
    }
}

}  // namespace

void Usage::add(const Allocation& allocation)
{
    ++allocations;
    segments.at(segment_index(allocation.segmentid)) += bytes_of(allocation);
    bytes += bytes_of(allocation);
}

void Usage::add(const Usage& other)
{
    allocations += other.allocations;
    std::ranges::transform(segments, other.segments, segments.begin(), std::plus{});
    bytes += other.bytes;
}

UsageTable usage_table(const MemorySnapshot& snapshot, const std::optional<std::size_t>& top)
{
    UsageTable table;
    for (const AdapterMemory& memory : snapshot.adapters) {
        append_devices(memory, table.devices);
    }
    for (const DeviceUsage& device : table.devices) {
        table.total.add(device.usage);
    }
    // Slot and device order what is of equal size.
    std::ranges::stable_sort(table.devices, std::greater{},
                             [](const DeviceUsage& device) { return device.usage.bytes; });
    table.devices.resize(std::min(table.devices.size(), top.value_or(table.devices.size())));
    return table;
}

}  // namespace nimba::smi
