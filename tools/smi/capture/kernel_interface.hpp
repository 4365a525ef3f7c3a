// SPDX-License-Identifier: MIT
// What the kernel-interface library of the current adapter tells.
#pragma once

#include "tools/archive/capture.hpp"
#include "tools/smi/worker/session.hpp"

#include <cstdint>
#include <optional>

namespace nimba::smi {

// The library that the management library has loaded for a chip, and its entry points. Prepares the
// hardware information as the management library does. Nothing when none is loaded. The session's
// adapter is current.
std::optional<archive::KernelInterface> read_kernel_interface(Session& session, uint32_t device_id);

// Asks it for frames, hardware information and engine use; `counters` has the first of its two
// samples of frames twice. What fails stays without a value.
void read_kernel_counters(Session& session, uint32_t device_id, archive::Counters& counters);

}  // namespace nimba::smi
