// SPDX-License-Identifier: MIT
// What workers answer to "capture-...". Each answer is a text, mostly a part of
// an archive's records.
#pragma once

#include "tools/smi/worker/message.hpp"
#include "tools/smi/worker/session.hpp"

#include <string_view>

namespace nimba::smi {

// What libdrm tells of the machine's devices: a manifest with nothing but "drm". No library is
// needed.
inline constexpr std::string_view kCaptureDrmRequest = "capture-drm";

// What `dmidecode -t memory` writes, as the management library runs it; null when it cannot be run.
// No library is needed.
inline constexpr std::string_view kCaptureDmidecodeRequest = "capture-dmidecode";

// The worker's own adapter, which becomes current: a manifest with nothing but that one, or none.
inline constexpr std::string_view kCaptureAdapterRequest = "capture-adapter";

// What the kernel-interface library tells of the current adapter: a sample without nodes.
inline constexpr std::string_view kCaptureCountersRequest = "capture-counters";

Message answer_capture_drm(Session& session);
Message answer_capture_dmidecode(Session& session);
Message answer_capture_adapter(Session& session);
Message answer_capture_counters(Session& session);

}  // namespace nimba::smi
