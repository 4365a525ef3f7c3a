// SPDX-License-Identifier: MIT
#include "replay/recorded_driver.hpp"

#include "replay/frames.hpp"
#include "replay/lasting_errors.hpp"
#include "served_nodes.hpp"
#include "tools/archive/entry_name.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <string_view>
#include <utility>

namespace nimba::sim {
namespace {

using std::chrono::nanoseconds;

constexpr mode_t kDirectoryMode = 0755;

// What the stand-in for a kernel-interface library adds to the last word of the extended hardware
// information.
constexpr uint32_t kExtendedHardware = 1;
// The words of the extended record of use that the shorter one has.
constexpr std::array<std::size_t, archive::kUsageWords> kUsagePlaces{2, 4, 7};

nanoseconds from_seconds(double seconds)
{
    return std::chrono::duration_cast<nanoseconds>(std::chrono::duration<double>{seconds});
}

// The part of the path that is behind the directory; nothing when it is not in it.
std::optional<std::string> behind(std::string_view path, std::string_view directory)
{
    if (!path.starts_with(directory)) {
        return std::nullopt;
    }
    const std::string_view rest = path.substr(directory.size());
    return rest.empty() || rest.starts_with('/') ? std::optional<std::string>{rest} : std::nullopt;
}

// Whether what could not be read is a directory, by its name.
bool names_directory(std::string_view path)
{
    constexpr std::array<std::string_view, 6> kNames{"allocations", "devices", "jw",
                                                     "qv",          "jw_info", "qv_info"};
    const std::string_view name = path.substr(path.rfind('/') + 1);
    return name.starts_with("hwmon") || std::ranges::find(kNames, name) != kNames.end();
}

// The adapter at that place of the bus; null when there is none.
const Adapter* adapter_at(const std::string& bus_id, const Machine& machine)
{
    const auto address = parse_pci_address(bus_id);
    const auto adapter = std::ranges::find_if(
        machine.adapters, [&](const Adapter& one) { return one.pci.address == address; });
    return adapter == machine.adapters.end() ? nullptr : &*adapter;
}

// Of what is in an adapter's directory in sysfs.
std::optional<std::string> path_of_device(std::string_view path, const Adapter& adapter)
{
    const int card = adapter.drm.card;
    if (const auto rest = behind(path, fmt::format("/{}_info", adapter.driver_dir))) {
        return fmt::format("info/{}{}", card, *rest);
    }
    const auto rest = behind(path, "/hwmon");
    return rest ? std::optional{fmt::format("hwmon/{}{}", card, *rest)} : std::nullopt;
}

std::string file_name(const std::string& path)
{
    return path.substr(path.rfind('/') + 1);
}

}  // namespace

std::optional<std::string> recorded_path(const std::string& encoded, const Machine& machine)
{
    const std::string path = archive::decode_path(encoded).value();
    if (const auto rest = behind(path, "/sys/kernel/debug/dri")) {
        return "dri" + *rest;
    }
    constexpr std::string_view kDevices = "/sys/bus/pci/devices/";
    if (path.starts_with(kDevices)) {
        const std::size_t end = std::min(path.find('/', kDevices.size()), path.size());
        const Adapter* const adapter =
            adapter_at(path.substr(kDevices.size(), end - kDevices.size()), machine);
        return adapter == nullptr ? std::nullopt
                                  : path_of_device(std::string_view{path}.substr(end), *adapter);
    }
    constexpr std::string_view kInfo = "/proc/gpuinfo_";
    if (!path.starts_with(kInfo)) {
        return std::nullopt;
    }
    const auto adapter =
        std::ranges::find(machine.adapters, path.substr(kInfo.size()),
                          [](const Adapter& one) { return std::to_string(one.drm.card); });
    return adapter == machine.adapters.end()
               ? std::nullopt
               : std::optional{node_path(*adapter, NodeDirectory::kProc)};
}

RecordedDriver::RecordedDriver(std::shared_ptr<const archive::Capture> capture,
                               const Machine& machine, double speed, Clock clock)
    : capture_{std::move(capture)}, speed_{speed}, clock_{std::move(clock)}, start_{clock_()}
{
    const Errors lasting = lasting_errors(*capture_);
    for (const archive::Sample& sample : capture_->samples) {
        moments_.push_back(make_moment(sample, machine, lasting));
    }
}

RecordedDriver::Moment RecordedDriver::make_moment(const archive::Sample& sample,
                                                   const Machine& machine, const Errors& lasting)
{
    Moment moment{from_seconds(sample.time.seconds), {}, {}};
    moment.nodes[""] = {{true, kDirectoryMode}, nullptr, {}};
    for (const archive::Node& node : sample.record.nodes) {
        const auto path = recorded_path(node.path, machine);
        if (!path) {
            continue;
        }
        if (node.kind == archive::NodeKind::kFile) {
            enter(moment, *path, {{false, node.mode}, sample.texts.at(node.path), {}});
            continue;
        }
        const bool listed = node.kind == archive::NodeKind::kDirectory;
        if (!listed && !lasting.contains(node.path)) {
            continue;
        }
        // What a fault befalls has to be there.
        if (listed || names_directory(node.path)) {
            const mode_t mode = listed ? node.mode : kDirectoryMode;
            enter(moment, *path, {{true, mode}, nullptr, {}});
        } else if (node.error != archive::kLimit) {
            enter(moment, *path, {{false, 0444}, std::make_shared<const std::string>(), {}});
        }
    }
    for (const archive::Node& node : sample.record.nodes) {
        const auto path = recorded_path(node.path, machine);
        if (!path || node.kind != archive::NodeKind::kDirectory) {
            continue;
        }
        std::vector<std::string> entries;
        for (const std::string& entry : node.entries) {
            entries.push_back(archive::decode_path(entry).value());
            // One of which no node could be read is a directory all the same.
            if (names_directory(node.path) &&
                !moment.nodes.contains(*path + "/" + entries.back()) &&
                (path->ends_with("/allocations") || path->ends_with("/devices"))) {
                enter(moment, *path + "/" + entries.back(), {{true, kDirectoryMode}, nullptr, {}});
            }
        }
        moment.nodes.at(*path).entries = std::move(entries);
    }
    for (const archive::Counters& counters : sample.record.counters) {
        if (const Adapter* const adapter = adapter_at(counters.bus_id, machine)) {
            moment.counters[adapter->drm.card] = &counters;
        }
    }
    return moment;
}

// Adds the node, and the directories that it is in.
void RecordedDriver::enter(Moment& moment, const std::string& path, RecordedNode node)
{
    if (const auto known = moment.nodes.find(path); known != moment.nodes.end()) {
        if (known->second.attributes.directory && node.attributes.directory) {
            known->second.attributes = node.attributes;
        }
        return;
    }
    moment.nodes.emplace(path, std::move(node));
    const std::size_t slash = path.rfind('/');
    const std::string directory = slash == std::string::npos ? "" : path.substr(0, slash);
    enter(moment, directory, {{true, kDirectoryMode}, nullptr, {}});
    moment.nodes.at(directory).entries.push_back(file_name(path));
}

// The sample that is shown now; `time` becomes that since it began.
std::size_t RecordedDriver::moment_now(nanoseconds& time) const
{
    const auto elapsed = static_cast<double>((clock_() - start_).count()) * speed_;
    constexpr double kGreatest = 9e18;
    time = nanoseconds{static_cast<int64_t>(std::min(elapsed, kGreatest))};
    const auto next = std::ranges::upper_bound(moments_, time, {}, &Moment::begin);
    const auto now = static_cast<std::size_t>(next - moments_.begin()) - 1;
    time -= moments_[now].begin;
    return now;
}

const RecordedDriver::RecordedNode* RecordedDriver::find(const std::string& path) const
{
    nanoseconds time{};
    const auto& nodes = moments_[moment_now(time)].nodes;
    const auto node = nodes.find(path);
    return node == nodes.end() ? nullptr : &node->second;
}

std::optional<NodeAttributes> RecordedDriver::look_up(const std::string& path)
{
    if (path == kAbsentFile) {
        return NodeAttributes{false, 0444};
    }
    const RecordedNode* const node = find(path);
    return node == nullptr ? std::nullopt : std::optional{node->attributes};
}

std::vector<std::string> RecordedDriver::list(const std::string& directory)
{
    const RecordedNode* const node = find(directory);
    return node == nullptr ? std::vector<std::string>{} : node->entries;
}

// The text of a node that counts frames, which go on.
std::optional<std::string> RecordedDriver::frame_text(const std::string& file) const
{
    const std::string name = file_name(file);
    const bool flips = name == "fps_count";
    if (!file.starts_with("info/") || (!flips && name != "rxa_blt_scn_cnt")) {
        return std::nullopt;
    }
    nanoseconds time{};
    const Moment& moment = moments_[moment_now(time)];
    for (const auto& [card, counters] : moment.counters) {
        if (file == fmt::format("info/{}/{}", card, name) && counters->frames) {
            auto texts = frame_texts_after(*counters->frames, time);
            return texts ? std::optional{flips ? texts->fps_count : texts->rxa_blt_scn_cnt}
                         : std::nullopt;
        }
    }
    return std::nullopt;
}

std::optional<std::string> RecordedDriver::read(const std::string& file)
{
    const RecordedNode* const node = find(file);
    if (node == nullptr || node->attributes.directory) {
        return std::nullopt;
    }
    {
        const std::lock_guard lock{mutex_};
        if (const auto written = written_.find(file); written != written_.end()) {
            return written->second;
        }
    }
    auto frames = frame_text(file);
    return frames ? frames : *node->text;
}

int RecordedDriver::write(const std::string& file, std::string_view text)
{
    const RecordedNode* const node = find(file);
    if (node == nullptr) {
        return ENOENT;
    }
    if (node->attributes.directory) {
        return EISDIR;
    }
    const std::string name = file_name(file);
    if (!file.starts_with("info/") || (name != "enable_usage" && name != "misc_ctl_flag")) {
        return EROFS;
    }
    const std::lock_guard lock{mutex_};
    written_[file] = text;
    return 0;
}

Counters RecordedDriver::counters(int card)
{
    nanoseconds time{};
    const std::size_t now = moment_now(time);
    Counters told;
    const auto found = moments_[now].counters.find(card);
    if (found == moments_[now].counters.end()) {
        return told;
    }
    const archive::Counters& recorded = *found->second;
    if (recorded.flips) {
        std::optional<archive::Flips> last;
        if (now + 1 < moments_.size()) {
            const auto next = moments_[now + 1].counters.find(card);
            if (next != moments_[now + 1].counters.end() && next->second->flips) {
                last = next->second->flips->front();
            }
        }
        const archive::Flips flips = flips_after(*recorded.flips, time, last);
        told.time = flips.time;
        told.flips = flips.count;
    }
    if (const auto& words =
            recorded.hardware_extended ? recorded.hardware_extended : recorded.hardware) {
        std::ranges::copy(*words, told.hardware.begin());
        told.hardware.back() -= recorded.hardware_extended ? kExtendedHardware : 0;
    }
    if (recorded.usage_extended) {
        std::ranges::copy(*recorded.usage_extended, told.usage.begin());
    } else if (const auto& words = recorded.usage ? recorded.usage : recorded.queues) {
        for (std::size_t i = 0; i < words->size(); ++i) {
            told.usage.at(kUsagePlaces.at(i)) = (*words)[i];
        }
    }
    return told;
}

}  // namespace nimba::sim
