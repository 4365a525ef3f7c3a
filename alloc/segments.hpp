// SPDX-License-Identifier: MIT
#pragma once

#include "nimba_mgmt_interface.h"

#include <algorithm>
#include <cstddef>

namespace nimba {

// The slot of a segment that is not negative: its own, or the last one for all from there on.
constexpr std::size_t segment_slot(int32_t segmentid)
{
    return static_cast<std::size_t>(std::min(segmentid, SEGMENT_SLOT_NUM - 1));
}

}  // namespace nimba
