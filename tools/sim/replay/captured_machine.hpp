// SPDX-License-Identifier: MIT
#pragma once

#include "machine.hpp"
#include "tools/archive/capture.hpp"

namespace nimba::sim {

// The machine that a capture is of, without what its drivers show: devices, processes,
// kernel-interface libraries, and as faults what could not be read in any of the samples. Processes
// that the devices name, and that the capture does not have, are absent.
Machine captured_machine(const archive::Capture& capture);

}  // namespace nimba::sim
