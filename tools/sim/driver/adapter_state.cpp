// SPDX-License-Identifier: MIT
#include "driver/adapter_state.hpp"

#include "machine.hpp"

namespace nimba::sim {
namespace {

constexpr std::size_t kNimbaFrameBuffer = 0;  // segments
constexpr std::size_t kQvFrameBuffer = 1;

}  // namespace

AdapterState::AdapterState(const Adapter& adapter)
    : device{adapter.pci.device},
      is_qv{!has_virtual_memory_beside(adapter)},
      driver_dir{adapter.driver_dir},
      board{adapter.power.board},
      dvfs{adapter.power.clocks},
      activity{adapter.power.activity},
      cooling{adapter.power},
      segments{adapter.power.segments}
{
    dvfs.set_load(activity.load());
}

void AdapterState::advance_to(std::chrono::nanoseconds time)
{
    activity.advance_to(time);
    cooling.advance_to(time, activity);
    dvfs.set_load(activity.load());
}

std::array<uint32_t, kUsageWords> AdapterState::usage() const
{
    return enable_usage ? activity.usage() : std::array<uint32_t, kUsageWords>{};
}

MemorySegment AdapterState::frame_buffer() const
{
    return segments.find(is_qv ? kQvFrameBuffer : kNimbaFrameBuffer).value_or(MemorySegment{});
}

}  // namespace nimba::sim
