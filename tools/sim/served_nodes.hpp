// SPDX-License-Identifier: MIT
#pragma once

namespace nimba::sim {

// The directory of a test bed in which the nodes of live drivers are mounted.
inline constexpr const char* kServedNodes = "drivers";

}  // namespace nimba::sim
