// SPDX-License-Identifier: MIT
#include "tools/smi/monitor/readings.hpp"

#include "tools/smi/worker/payload_json.hpp"

namespace nimba::smi {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(SegmentUse, used, total)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(SegmentReading, bus_id, remarks, stale, source, segments)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(ClockReading, bus_id, remarks, stale, engine, video, memory,
                                   core, gfx, gfx_voltage, level)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(SensorReading, bus_id, remarks, stale, temperature, fan0, fan1,
                                   fan_speed)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(FrameCounts, flips, time, blits)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(FrameRates, flips, blits, both, average)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(CounterReading, bus_id, remarks, stale, frames, rates, engine_3d,
                                   engine_vcp, engine_vpp, bandwidth, busy)

NIMBA_SMI_PAYLOAD(SegmentReading)
NIMBA_SMI_PAYLOAD(ClockReading)
NIMBA_SMI_PAYLOAD(SensorReading)
NIMBA_SMI_PAYLOAD(CounterReading)

}  // namespace nimba::smi
