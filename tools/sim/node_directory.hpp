// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace nimba::sim {

// The directories in which an adapter's driver shows its state. What it shows in /proc is one file.
enum class NodeDirectory { kDebug, kInfo, kHwmon, kProc };

// What machine files call them.
inline constexpr std::array<std::pair<std::string_view, NodeDirectory>, 4> kNodeDirectories{{
    {"debug", NodeDirectory::kDebug},
    {"info", NodeDirectory::kInfo},
    {"hwmon", NodeDirectory::kHwmon},
    {"proc", NodeDirectory::kProc},
}};

constexpr std::string_view to_text(NodeDirectory directory)
{
    return std::ranges::find(kNodeDirectories, directory,
                             [](const auto& row) { return row.second; })
        ->first;
}

}  // namespace nimba::sim
