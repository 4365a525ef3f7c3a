// SPDX-License-Identifier: MIT
#pragma once

#include "tools/archive/capture.hpp"
#include "tools/smi/worker/session.hpp"

namespace nimba::smi {

// Asks libdrm, under the names by which the management library loads it, for the devices, and each
// device's driver for its version. Nodes are opened as the management library opens them.
archive::Drm read_drm_identity(Session& session);

}  // namespace nimba::smi
