// SPDX-License-Identifier: MIT
#include "driver/adapter_path.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>

namespace nimba::sim {
namespace {

using Components = std::vector<std::string>;

// Where the directories of all adapters are.
struct Root {
    std::string_view name;
    std::string_view before_card;  // in the second component
    NodeDirectory directory;
    std::size_t depth;  // components of the directory's own path
};

constexpr std::array kRoots{
    Root{"dri", "", NodeDirectory::kDebug, 3},
    Root{"info", "", NodeDirectory::kInfo, 2},
    Root{"hwmon", "", NodeDirectory::kHwmon, 3},
    Root{"proc", "gpuinfo_", NodeDirectory::kProc, 2},
};

constexpr std::string_view kVirtualMemory = "qv";  // beside a debug directory

}  // namespace

Components path_components(std::string_view path)
{
    Components components;
    while (!path.empty()) {
        const auto length = std::min(path.find('/'), path.size());
        components.emplace_back(path.substr(0, length));
        path.remove_prefix(std::min(length + 1, path.size()));
    }
    return components;
}

bool starts_with(const Components& path, const Components& pattern)
{
    return path.size() >= pattern.size() &&
           std::equal(pattern.begin(), pattern.end(), path.begin(),
                      [](const std::string& wanted, const std::string& component) {
                          return wanted == "*" || wanted == component;
                      });
}

AdapterPath parse_adapter_path(std::string_view path, const std::set<int>& cards_with_qv_beside)
{
    const Components all = path_components(path);
    AdapterPath result;
    if (all.size() < 2) {
        return result;
    }
    const auto* const root = std::ranges::find(kRoots, all[0], &Root::name);
    if (root == kRoots.end() || !all[1].starts_with(root->before_card)) {
        return result;
    }
    const char* const begin = all[1].data() + root->before_card.size();
    const char* const end = all[1].data() + all[1].size();
    if (std::from_chars(begin, end, result.card).ptr != end) {
        result.card = -1;
    } else if (all.size() >= root->depth) {
        const bool is_beside = root->directory == NodeDirectory::kDebug &&
                               all[2] == kVirtualMemory &&
                               cards_with_qv_beside.contains(result.card);
        const std::size_t depth = root->depth - (is_beside ? 1U : 0U);
        result.in_driver = true;
        result.directory = root->directory;
        result.components.assign(all.begin() + static_cast<std::ptrdiff_t>(depth), all.end());
    }
    return result;
}

}  // namespace nimba::sim
