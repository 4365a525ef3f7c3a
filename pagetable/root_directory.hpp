// SPDX-License-Identifier: MIT
// Where the driver shows page tables.
#pragma once

#include "core/entries.hpp"

#include <array>
#include <cstdio>

namespace nimba {

// Always that of DRM minor 0, whatever adapter is current; callers rely on it.
inline constexpr const char* kPageTableRoot = "/sys/kernel/debug/dri/0/qv";

using NodePath = std::array<char, 1024>;

// Opens the directory `name` of the root for listing. Empty when it cannot be opened.
inline Directory open_root_directory(const char* name)
{
    NodePath path;
    std::snprintf(path.data(), path.size(), "%s/%s", kPageTableRoot, name);
    return Directory{::opendir(path.data())};
}

// The path of the node of an entry of that directory.
inline NodePath node_path(const char* directory, const char* entry, const char* node)
{
    NodePath path;
    std::snprintf(path.data(), path.size(), "%s/%s/%s/%s", kPageTableRoot, directory, entry, node);
    return path;
}

}  // namespace nimba
