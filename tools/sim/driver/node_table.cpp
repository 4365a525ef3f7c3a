// SPDX-License-Identifier: MIT
#include "driver/node_table.hpp"

namespace nimba::sim {

NodeTable::NodeTable(uint64_t root) : last_number_{root}
{
    const Node node{"", {true, 0755}};
    entries_.emplace(root, Entry{node, 1});
    numbers_.emplace(key(node), root);
}

NodeTable::Key NodeTable::key(const Node& node)
{
    return {node.path, node.attributes.directory, node.absences};
}

NodeTable::Node NodeTable::node(uint64_t number)
{
    const std::scoped_lock lock{mutex_};
    return entries_.at(number).node;
}

uint64_t NodeTable::add(const Node& node)
{
    const std::scoped_lock lock{mutex_};
    const auto [place, is_new] = numbers_.try_emplace(key(node), last_number_ + 1);
    if (is_new) {
        ++last_number_;
        entries_.emplace(last_number_, Entry{node, 1});
        return last_number_;
    }
    Entry& entry = entries_.at(place->second);
    entry.node = node;
    ++entry.times;
    return place->second;
}

void NodeTable::set_attributes(uint64_t number, NodeAttributes attributes)
{
    const std::scoped_lock lock{mutex_};
    entries_.at(number).node.attributes = attributes;
}

void NodeTable::forget(uint64_t number, uint64_t times)
{
    const std::scoped_lock lock{mutex_};
    const auto found = entries_.find(number);
    if (found == entries_.end()) {
        return;
    }
    Entry& entry = found->second;
    entry.times -= times;
    if (entry.times == 0) {
        numbers_.erase(key(entry.node));
        entries_.erase(found);
    }
}

}  // namespace nimba::sim
