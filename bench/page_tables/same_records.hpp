// SPDX-License-Identifier: MIT
#pragma once

#include "nimba_mgmt_interface.h"

namespace nimba::bench {

// Whether the two devices' entries are the same, byte for byte, and are linked in the same way.
bool same_entries(const data_vectors& a, const data_vectors& b);

}  // namespace nimba::bench
