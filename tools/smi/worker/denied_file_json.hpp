// SPDX-License-Identifier: MIT
// The JSON form of a file that may not be opened: for the files that define those of payloads.
#pragma once

#include "tools/smi/worker/payload.hpp"

#include <nlohmann/json.hpp>

namespace nimba::smi {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(DeniedFile, path, group)

}  // namespace nimba::smi
