// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <string_view>

namespace nimba::smi {

// By DVFS_LEVEL_*.
inline constexpr std::array<std::string_view, 3> kLevelNames{"balance", "lowpower", "performance"};

}  // namespace nimba::smi
