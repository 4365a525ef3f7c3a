// SPDX-License-Identifier: MIT
// What scrapes brought, for the tests of the exporter.
#pragma once

#include "smi/adapter_states.hpp"
#include "tools/smi/export/figures.hpp"

#include <cstdint>
#include <string>
#include <utility>

namespace nimba::smi::exporting {

// A machine of which nothing but this adapter is known.
inline MachineFigures machine_with(AdapterFigures adapter)
{
    MachineFigures machine;
    machine.tool_version = "1.2.3";
    machine.duration = Seconds{0.25};
    machine.adapters.push_back(std::move(adapter));
    return machine;
}

// An adapter that discovery found and that told nothing.
inline AdapterFigures silent_adapter()
{
    AdapterFigures adapter;
    adapter.state.adapter = {1, "0000:02:00.0", std::nullopt};
    return adapter;
}

inline LeakGroup leak_group(const Shape& shape, uint64_t count, int32_t oldest_hits)
{
    return {shape, oldest_hits, {{0x11, count}}};
}

inline VmDevice vm_device(std::string pid, std::string name, LevelCounts tables, LevelCounts pages)
{
    return {0, std::move(pid), std::move(name), tables, pages};
}

}  // namespace nimba::smi::exporting
