// SPDX-License-Identifier: MIT
#pragma once

#include "node_directory.hpp"

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace nimba::sim {

// A path of a LiveDriver as one of an adapter, such as "dri/CARD/DRIVER/...", and the directory
// "dri/CARD" above.
struct AdapterPath {
    int card = -1;           // negative: of no adapter
    bool in_driver = false;  // in the driver's directory, or that directory
    NodeDirectory directory = NodeDirectory::kDebug;
    std::vector<std::string> components{};  // in the driver's directory
};

// `cards_with_qv_beside`: of the adapters whose virtual memory has a directory beside the debug
// directory. What is there is "qv/..." in the debug directory.
AdapterPath parse_adapter_path(std::string_view path, const std::set<int>& cards_with_qv_beside);

// The names between the slashes.
std::vector<std::string> path_components(std::string_view path);

// Whether the path, or a directory above it, is what the pattern means; "*" is any component.
bool starts_with(const std::vector<std::string>& path, const std::vector<std::string>& pattern);

}  // namespace nimba::sim
