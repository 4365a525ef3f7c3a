// SPDX-License-Identifier: MIT
#pragma once

namespace nimba::sim {

// The directory of a test bed in which the nodes of live drivers are mounted.
inline constexpr const char* kServedNodes = "drivers";

// A file of a recorded driver that is there to look at, and not there to be opened. The preload
// library shows the real machine's file where the test bed has none.
inline constexpr const char* kAbsentFile = "absent";

}  // namespace nimba::sim
