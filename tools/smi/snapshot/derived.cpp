// SPDX-License-Identifier: MIT
#include "tools/smi/snapshot/derived.hpp"

#include <tuple>

namespace nimba::smi {
namespace {

bool has_any(const auto&... figures)
{
    return (figures.has_value() || ...);
}

}  // namespace

MemoryUse memory_use(const AdapterState& adapter)
{
    const SegmentTable& table = adapter.segments;
    return table.segments.empty() ? MemoryUse{}
                                  : MemoryUse{in_bytes(table.sum.used, table.source),
                                              in_bytes(table.sum.total, table.source)};
}

std::optional<int64_t> temperature(const AdapterState& adapter)
{
    return adapter.sensors.temperature ? adapter.sensors.temperature
                                       : std::optional<int64_t>(adapter.summary.temperature);
}

bool is_silent(const AdapterState& adapter)
{
    const auto& [clocks, sensors, counters] =
        std::tie(adapter.clocks, adapter.sensors, adapter.counters);
    return !adapter.processes_known && !memory_use(adapter).used &&
           !has_any(clocks.engine, clocks.video, clocks.memory, clocks.core, clocks.gfx,
                    clocks.gfx_voltage, clocks.level, sensors.temperature, sensors.fan0,
                    sensors.fan1, sensors.fan_speed, counters.frames.flips, counters.engine_3d,
                    counters.engine_vcp, counters.engine_vpp);
}

}  // namespace nimba::smi
