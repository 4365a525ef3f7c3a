// SPDX-License-Identifier: MIT
#pragma once

namespace nimba::sim {

// Kills the children of this process and, as it must be their subreaper, the children that they
// leave to it, and waits until there are none.
void kill_leftovers();

}  // namespace nimba::sim
