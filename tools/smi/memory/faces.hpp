// SPDX-License-Identifier: MIT
// What the faces of the commands about memory have in common.
#pragma once

#include "tools/smi/memory/owners.hpp"
#include "tools/smi/memory/snapshot.hpp"
#include "tools/smi/text/document.hpp"
#include "tools/smi/worker/payload.hpp"

#include <cstdint>
#include <span>
#include <string>

namespace nimba::smi {

// "0x1f"
std::string handle_text(uint32_t handle);

Document json_handle(uint32_t handle);

// Objects with "pid" and "name"; a name that is not known is null.
Document json_processes(std::span<const Process> processes);

// The adapter as an object with "slot", "name" and "bus_id".
Document json_adapter(const SlotIdentity& adapter);

// The adapters that could be read.
Document json_adapters(const MemorySnapshot& snapshot);

}  // namespace nimba::smi
