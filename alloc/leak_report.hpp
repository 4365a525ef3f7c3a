// SPDX-License-Identifier: MIT
#pragma once

#include "nimba_mgmt_interface.h"

#include <span>

namespace nimba {

// The largest groups of like records, largest first; of equal ones, those first met first.
_GFX_MEMLEAK_INFO report_leaks(std::span<const _GFX_ALLOCATION_INFO> kept);

}  // namespace nimba
