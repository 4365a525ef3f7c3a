// SPDX-License-Identifier: MIT
#include "tools/smi/memory/faces.hpp"

#include "tools/smi/text/json.hpp"

#include <fmt/core.h>

namespace nimba::smi {

std::string handle_text(uint32_t handle)
{
    return fmt::format("{:#x}", handle);
}

Document json_handle(uint32_t handle)
{
    return handle_text(handle);
}

Document json_processes(std::span<const Process> processes)
{
    Document list = Document::array();
    for (const Process& process : processes) {
        list.push_back(
            {{"pid", process.pid},
             {"name", process.name.empty() ? Document(nullptr) : Document(process.name)}});
    }
    return list;
}

Document json_adapter(const SlotIdentity& adapter)
{
    return {{"slot", adapter.slot}, {"name", or_null(adapter.name)}, {"bus_id", adapter.bus_id}};
}

Document json_adapters(const MemorySnapshot& snapshot)
{
    Document list = Document::array();
    for (const AdapterMemory& memory : snapshot.adapters) {
        list.push_back(json_adapter(memory.adapter));
    }
    return list;
}

}  // namespace nimba::smi
