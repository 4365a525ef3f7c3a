// SPDX-License-Identifier: MIT
// The display outputs of an adapter.
#pragma once

#include "core/gpuinfo_text.hpp"

#include <cstdint>

namespace nimba {

// The outputs as the directory drm/card<card> of the current adapter's PCI device lists them. One
// that cannot be opened is told on standard output, and lists none.
DisplayOutputs listed_outputs(int card);

}  // namespace nimba
