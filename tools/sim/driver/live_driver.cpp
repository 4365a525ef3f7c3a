// SPDX-License-Identifier: MIT
#include "driver/live_driver.hpp"

#include "driver/allocation_text.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <utility>

namespace nimba::sim {
namespace {

constexpr mode_t kStateMode = 0444;    // of nodes that only the driver changes
constexpr mode_t kSettingMode = 0644;  // of all others
constexpr const char* kInfo = "info";

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
    const std::string directory = debug_directory(adapter);
    if (const auto nodes = adapter.directories.find(NodeDirectory::kDebug);
        nodes != adapter.directories.end()) {
        for (const auto& [path, text] : nodes->second) {
            fixed_.add_file(fmt::format("{}/{}", directory, path), text, kSettingMode);
        }
    }
    if (adapter.video_memory.shown) {
        add_video_memory(adapter, directory);
    }
    for (const NodePlace& place : adapter.unreadable) {
        if (place.directory == NodeDirectory::kDebug) {
            fixed_.set_mode(place.path.empty() ? directory : directory + "/" + place.path, 0);
        }
    }
}

void LiveDriver::add_video_memory(const Adapter& adapter, const std::string& directory)
{
    const VideoMemory& memory = adapter.video_memory;
    const std::string allocations = directory + "/allocations";
    fixed_.add_directory(allocations);
    for (const Allocation& allocation : memory.allocations) {
        fixed_.add_file(fmt::format("{}/{}/{}", allocations, allocation.entry, kInfo),
                        allocation_text(allocation.values, {}, adapter.va_driver), kStateMode);
    }
    allocations_.try_emplace(allocations + "/", memory, adapter.va_driver);

    fixed_.add_directory(directory + "/devices");
    for (const DeviceContext& context : memory.contexts) {
        const std::string entry = std::to_string(context.entry);
        fixed_.add_file(
            fmt::format("{}/devices/{}/{}", directory, entry, adapter.va_driver ? kInfo : entry),
            context_text(context), kStateMode);
    }
}

void LiveDriver::advance()
{
    using Ticks = std::chrono::duration<uint64_t, std::ratio<1, Allocations::kTicksPerSecond>>;
    const auto ticks = std::chrono::duration_cast<Ticks>(clock_() - start_);
    for (auto& [directory, allocations] : allocations_) {
        allocations.advance_to(ticks.count());
    }
}

std::optional<LiveDriver::Place> LiveDriver::find(const std::string& path) const
{
    for (const auto& [directory, allocations] : allocations_) {
        if (!path.starts_with(directory)) {
            continue;
        }
        const std::size_t slash = std::min(path.find('/', directory.size()), path.size());
        std::string entry = path.substr(directory.size(), slash - directory.size());
        if (allocations.contains(entry)) {
            return Place{&allocations, std::move(entry),
                         path.substr(std::min(slash + 1, path.size()))};
        }
    }
    return std::nullopt;
}

std::optional<NodeAttributes> LiveDriver::look_up(const std::string& path)
{
    const std::lock_guard lock{mutex_};
    advance();
    if (const auto place = find(path)) {
        if (place->node.empty()) {
            return NodeAttributes{true, 0755};
        }
        return place->node == kInfo ? std::optional{NodeAttributes{false, kStateMode}}
                                    : std::nullopt;
    }
    return fixed_.look_up(path);
}

std::vector<std::string> LiveDriver::list(const std::string& directory)
{
    const std::lock_guard lock{mutex_};
    advance();
    if (const auto place = find(directory)) {
        return place->node.empty() ? std::vector<std::string>{kInfo} : std::vector<std::string>{};
    }
    std::vector<std::string> names = fixed_.list(directory);
    if (const auto found = allocations_.find(directory + "/"); found != allocations_.end()) {
        std::ranges::move(found->second.list(), std::back_inserter(names));
    }
    return names;
}

std::optional<std::string> LiveDriver::read(const std::string& file)
{
    const std::lock_guard lock{mutex_};
    advance();
    if (const auto place = find(file)) {
        return place->node == kInfo ? place->allocations->info(place->entry) : std::nullopt;
    }
    return fixed_.read(file);
}

int LiveDriver::write(const std::string& file, std::string_view text)
{
    const std::lock_guard lock{mutex_};
    advance();
    if (const auto place = find(file)) {
        if (place->node.empty()) {
            return EISDIR;
        }
        return place->node == kInfo ? EACCES : ENOENT;
    }
    return fixed_.write(file, text);
}

}  // namespace nimba::sim
