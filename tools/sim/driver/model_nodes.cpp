// SPDX-License-Identifier: MIT
#include "driver/model_nodes.hpp"

#include <algorithm>

namespace nimba::sim {
namespace {

bool is_below(std::string_view node, std::string_view directory)
{
    return node.size() > directory.size() && node.starts_with(directory) &&
           node[directory.size()] == '/';
}

}  // namespace

bool is_at_or_below(std::string_view node, const NodePlace& place)
{
    return node == place.path || is_below(node, place.path);
}

std::vector<ModelNode> shown_model_nodes(const Adapter& adapter, NodeDirectory directory)
{
    const auto texts = adapter.directories.find(directory);
    if (texts == adapter.directories.end()) {
        return {};
    }
    std::vector<ModelNode> nodes = AdapterModel{adapter}.nodes(directory);
    std::erase_if(nodes, [&](const ModelNode& node) {
        const auto takes_away = [&](const NodePlace& place) {
            return place.directory == directory && is_at_or_below(node.name, place);
        };
        const auto replaces = [&](const Nodes::value_type& text) {
            return node.name == text.first || is_below(node.name, text.first) ||
                   is_below(text.first, node.name);
        };
        return std::ranges::any_of(adapter.missing, takes_away) ||
               std::ranges::any_of(texts->second, replaces);
    });
    return nodes;
}

}  // namespace nimba::sim
