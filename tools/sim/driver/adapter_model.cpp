// SPDX-License-Identifier: MIT
#include "driver/adapter_model.hpp"

#include "driver/gpuinfo_text.hpp"
#include "driver/state_nodes.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <span>

namespace nimba::sim {
namespace {

constexpr mode_t kStateMode = 0444;
constexpr mode_t kSettingMode = 0644;

std::string heap_path(std::string_view heap)
{
    return fmt::format("heaps/{}/info", heap);
}

std::string heap_text(const MemorySegment& heap)
{
    return fmt::format("Total segment size:  {}\nKMD used segment memory:  {}\n", heap.total,
                       heap.used);
}

// The segment of a heap node, which tells what the driver itself uses: callers add the allocations.
std::optional<MemorySegment> find_heap(const AdapterState& state, std::string_view path)
{
    const auto* const heap = std::ranges::find(kHeapNames, path, heap_path);
    if (!state.is_qv || heap == kHeapNames.end()) {
        return std::nullopt;
    }
    return state.segments.find_without_allocations(
        static_cast<std::size_t>(heap - kHeapNames.begin()));
}

std::vector<ModelNode> heap_nodes(const AdapterState& state)
{
    std::vector<ModelNode> nodes;
    for (const std::string_view heap : kHeapNames) {
        if (find_heap(state, heap_path(heap))) {
            nodes.push_back({heap_path(heap), kStateMode});
        }
    }
    return nodes;
}

// The nodes of the directories that have commands.
std::span<const StateNode> nodes_of(const AdapterState& state, NodeDirectory directory)
{
    if (directory == NodeDirectory::kInfo) {
        return state.is_qv ? qv_info_nodes() : info_nodes();
    }
    return directory == NodeDirectory::kHwmon ? hwmon_nodes() : std::span<const StateNode>{};
}

const StateNode* find_node(const AdapterState& state, NodeDirectory directory,
                           std::string_view name)
{
    const auto nodes = nodes_of(state, directory);
    const auto node = std::ranges::find(nodes, name, &StateNode::name);
    return node == nodes.end() ? nullptr : &*node;
}

}  // namespace

AdapterModel::AdapterModel(const Adapter& adapter) : state_{adapter} {}

void AdapterModel::advance_to(std::chrono::nanoseconds time)
{
    state_.advance_to(time);
}

void AdapterModel::set_used(std::size_t segment, uint64_t bytes)
{
    state_.segments.set_allocated(segment, bytes);
}

std::vector<ModelNode> AdapterModel::nodes(NodeDirectory directory) const
{
    if (directory == NodeDirectory::kProc) {
        return {{"", kStateMode}};
    }
    if (directory == NodeDirectory::kDebug) {
        return heap_nodes(state_);
    }
    std::vector<ModelNode> nodes;
    for (const StateNode& node : nodes_of(state_, directory)) {
        nodes.push_back(
            {std::string{node.name}, node.command == nullptr ? kStateMode : kSettingMode});
    }
    return nodes;
}

std::optional<std::string> AdapterModel::read(NodeDirectory directory, std::string_view name) const
{
    if (directory == NodeDirectory::kProc) {
        return name.empty() ? std::optional{gpuinfo_text(state_)} : std::nullopt;
    }
    if (directory == NodeDirectory::kDebug) {
        const auto heap = find_heap(state_, name);
        return heap ? std::optional{heap_text(*heap)} : std::nullopt;
    }
    const StateNode* const node = find_node(state_, directory, name);
    return node == nullptr ? std::nullopt : std::optional{node->text(state_)};
}

int AdapterModel::write(NodeDirectory directory, std::string_view name, std::string_view text)
{
    const StateNode* const node = find_node(state_, directory, name);
    if (node == nullptr) {
        return read(directory, name) ? EACCES : ENOENT;
    }
    if (node->command == nullptr) {
        return EACCES;
    }
    return node->command(state_, text) ? 0 : EINVAL;
}

Counters AdapterModel::counters() const
{
    return {state_.activity.last_flip(), state_.activity.flips(), state_.activity.bandwidth(),
            state_.usage()};
}

}  // namespace nimba::sim
