// SPDX-License-Identifier: MIT
#include "driver/live_driver.hpp"

#include "driver/allocation_text.hpp"
#include "driver/model_nodes.hpp"
#include "handle_name.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <utility>

namespace nimba::sim {
namespace {

constexpr mode_t kStateMode = 0444;    // of nodes that only the driver changes
constexpr mode_t kSettingMode = 0644;  // of all others
constexpr const char* kInfo = "info";
constexpr const char* kVmInfo = "vm_info";
constexpr std::size_t kContextDigits = 8;  // of a handle that names a context's directory

std::string path_in(const std::string& directory, const std::string& path)
{
    return path.empty() ? directory : fmt::format("{}/{}", directory, path);
}

}  // namespace

std::chrono::nanoseconds LiveDriver::monotonic_time()
{
    return std::chrono::steady_clock::now().time_since_epoch();
}

LiveDriver::LiveDriver(Machine machine, Clock clock)
    : machine_{std::move(machine)}, clock_{std::move(clock)}, start_{clock_()}
{
    for (const Adapter& adapter : machine_.adapters) {
        add(adapter);
    }
}

void LiveDriver::add(const Adapter& adapter)
{
    models_.try_emplace(adapter.drm.card, adapter);
    for (const auto& [directory, texts] : adapter.directories) {
        add_directory(adapter, directory, texts);
    }
    if (adapter.video_memory.shown) {
        add_video_memory(adapter);
    }
    set_modes(adapter);
}

void LiveDriver::add_directory(const Adapter& adapter, NodeDirectory directory, const Nodes& texts)
{
    const std::string top = node_path(adapter, directory);
    const bool is_file = directory == NodeDirectory::kProc;
    if (!is_file) {
        fixed_.add_directory(top);
    }
    for (const auto& [path, text] : texts) {
        fixed_.add_file(path_in(top, path), text, is_file ? kStateMode : kSettingMode);
    }
    for (ModelNode& node : shown_model_nodes(adapter, directory)) {
        const std::string path = path_in(top, node.name);
        fixed_.add_file(path, "", node.mode);
        model_places_.try_emplace(
            path, ModelPlace{&models_.at(adapter.drm.card), directory, std::move(node.name)});
    }
}

void LiveDriver::set_modes(const Adapter& adapter)
{
    for (const NodePlace& place : adapter.unreadable) {
        fixed_.set_mode(path_in(node_path(adapter, place.directory), place.path), 0);
        if (place.directory == NodeDirectory::kDebug && place.path.empty() &&
            adapter.video_memory.shown) {
            fixed_.set_mode(virtual_memory_directory(adapter), 0);
        }
    }
}

void LiveDriver::add_video_memory(const Adapter& adapter)
{
    const std::string directory = debug_directory(adapter);
    const Memory& memory = memories_
                               .try_emplace(adapter.drm.card, adapter.video_memory,
                                            adapter.va_driver, machine_.processes)
                               .first->second;
    fixed_.add_directory(directory + "/allocations");
    fixed_.add_directory(directory + "/devices");
    if (has_virtual_memory_beside(adapter)) {
        const std::string beside = virtual_memory_directory(adapter);
        fixed_.add_directory(beside + "/allocations");
        fixed_.add_directory(beside + "/devices");
        live_.try_emplace(directory + "/allocations/",
                          LiveDirectory{&memory, AllocationNames::kEntries, {kInfo}});
        live_.try_emplace(beside + "/allocations/",
                          LiveDirectory{&memory, AllocationNames::kHandles, {kVmInfo}});
    } else {
        live_.try_emplace(directory + "/allocations/",
                          LiveDirectory{&memory, AllocationNames::kHandles, {kInfo, kVmInfo}});
    }
    for (const Allocation& allocation : adapter.video_memory.allocations) {
        add_allocation(adapter, memory, allocation);
    }
    for (const DeviceContext& context : adapter.video_memory.contexts) {
        add_context(adapter, memory, context);
    }
}

// In a directory beside, what has no name, or the name of one before it, is missing.
void LiveDriver::add_allocation(const Adapter& adapter, const Memory& memory,
                                const Allocation& allocation)
{
    const auto name = handle_name(allocation.values[AllocationKey::kHandle], 1);
    const bool by_entry = adapter.video_memory.names == AllocationNames::kEntries;
    fixed_.add_file(fmt::format("{}/allocations/{}/{}", debug_directory(adapter),
                                by_entry ? std::to_string(allocation.entry) : name.value(), kInfo),
                    allocation_text(allocation.values, {}, adapter.va_driver), kStateMode);
    if (!name) {
        return;
    }
    const std::string node =
        fmt::format("{}/allocations/{}/{}", virtual_memory_directory(adapter), *name, kVmInfo);
    if (!fixed_.look_up(node)) {
        fixed_.add_file(
            node, allocation.vm_info.value_or(memory.virtual_memory.node(allocation.values, {})),
            kStateMode);
    }
}

void LiveDriver::add_context(const Adapter& adapter, const Memory& memory,
                             const DeviceContext& context)
{
    const std::string entry = std::to_string(context.entry);
    const std::string directory = fmt::format("{}/devices/{}", debug_directory(adapter), entry);
    const std::string text = context_text(context);
    fixed_.add_file(fmt::format("{}/{}", directory, adapter.va_driver ? kInfo : entry), text,
                    kStateMode);
    std::string tables = directory;
    if (has_virtual_memory_beside(adapter)) {
        const auto name = handle_name(context.handle, kContextDigits);
        tables = fmt::format("{}/devices/{}", virtual_memory_directory(adapter), name.value_or(""));
        if (!name || fixed_.look_up(tables)) {
            return;
        }
    }
    if (!fixed_.look_up(fmt::format("{}/{}", tables, kInfo))) {
        fixed_.add_file(fmt::format("{}/{}", tables, kInfo), text, kStateMode);
    }
    const std::string node = fmt::format("{}/{}", tables, kVmInfo);
    fixed_.add_file(node, context.vm_info.value_or(""), kStateMode);
    if (!context.vm_info) {
        dumps_.try_emplace(node, Dump{&memory, &context});
    }
}

void LiveDriver::advance()
{
    using Ticks = std::chrono::duration<uint64_t, std::ratio<1, Allocations::kTicksPerSecond>>;
    const auto time = clock_() - start_;
    const auto ticks = std::chrono::duration_cast<Ticks>(time);
    for (auto& [card, memory] : memories_) {
        memory.allocations.advance_to(ticks.count());
        AdapterModel& model = models_.at(card);
        for (const auto& [segment, bytes] : memory.allocations.used()) {
            if (segment >= 0) {
                model.set_used(static_cast<std::size_t>(segment), bytes);
            }
        }
    }
    for (auto& [card, model] : models_) {
        model.advance_to(time);
    }
}

bool LiveDriver::Place::is_file() const
{
    return std::ranges::find(directory->nodes, node) != directory->nodes.end();
}

std::optional<LiveDriver::Place> LiveDriver::find(const std::string& path) const
{
    for (const auto& [directory, live] : live_) {
        if (!path.starts_with(directory)) {
            continue;
        }
        const std::size_t slash = std::min(path.find('/', directory.size()), path.size());
        std::string name = path.substr(directory.size(), slash - directory.size());
        if (live.memory->allocations.find(name, live.names)) {
            return Place{&live, std::move(name), path.substr(std::min(slash + 1, path.size()))};
        }
    }
    return std::nullopt;
}

std::optional<NodeAttributes> LiveDriver::look_up(const std::string& path)
{
    const std::lock_guard lock{mutex_};
    advance();
    if (const auto place = find(path)) {
        if (place->is_directory()) {
            return NodeAttributes{true, 0755};
        }
        return place->is_file() ? std::optional{NodeAttributes{false, kStateMode}} : std::nullopt;
    }
    return fixed_.look_up(path);
}

std::vector<std::string> LiveDriver::list(const std::string& directory)
{
    const std::lock_guard lock{mutex_};
    advance();
    if (const auto place = find(directory)) {
        return place->is_directory() ? place->directory->nodes : std::vector<std::string>{};
    }
    std::vector<std::string> names = fixed_.list(directory);
    if (const auto found = live_.find(directory + "/"); found != live_.end()) {
        const LiveDirectory& live = found->second;
        std::ranges::move(live.memory->allocations.list(live.names), std::back_inserter(names));
    }
    return names;
}

std::optional<std::string> LiveDriver::read(const Place& place)
{
    if (!place.is_file()) {
        return std::nullopt;
    }
    const auto& [memory, names, nodes] = *place.directory;
    if (place.node == kInfo) {
        return memory->allocations.info(place.name, names);
    }
    const AllocationView allocation = *memory->allocations.find(place.name, names);
    return memory->virtual_memory.node(*allocation.values, allocation.own);
}

std::optional<std::string> LiveDriver::read(const std::string& file)
{
    std::unique_lock lock{mutex_};
    advance();
    if (const auto dump = dumps_.find(file); dump != dumps_.end()) {
        const auto& [memory, context] = dump->second;
        const AddressSpace space =
            memory->virtual_memory.address_space(*context, memory->allocations);
        lock.unlock();  // others need not wait for a long text
        return VirtualMemory::dump(*context, space);
    }
    if (const auto place = model_places_.find(file); place != model_places_.end()) {
        const auto& [model, directory, name] = place->second;
        return model->read(directory, name);
    }
    if (const auto place = find(file)) {
        return read(*place);
    }
    return fixed_.read(file);
}

int LiveDriver::write(const std::string& file, std::string_view text)
{
    const std::lock_guard lock{mutex_};
    advance();
    if (const auto place = find(file)) {
        if (place->is_directory()) {
            return EISDIR;
        }
        return place->is_file() ? EACCES : ENOENT;
    }
    if (const auto model_place = model_places_.find(file); model_place != model_places_.end()) {
        const auto& [model, directory, name] = model_place->second;
        return model->write(directory, name, text);
    }
    return fixed_.write(file, text);
}

Counters LiveDriver::counters(int card)
{
    const std::lock_guard lock{mutex_};
    advance();
    return models_.at(card).counters();
}

}  // namespace nimba::sim
