// SPDX-License-Identifier: MIT
#include "tools/smi/capture/sampler.hpp"

#include "nimba_mgmt_interface.h"
#include "tools/archive/entry_name.hpp"
#include "tools/smi/decimal.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <string_view>
#include <utility>

namespace nimba::smi {
namespace {

using archive::Node;
using archive::NodeKind;

constexpr const char* kMinor0 = "/sys/kernel/debug/dri/0/qv";

std::string error_name(int error)
{
    if (error == kNoAnswer) {
        return archive::kDeadline;
    }
    const char* const name = ::strerrorname_np(error);
    return name == nullptr ? "EIO" : name;
}

bool means_absent(int error)
{
    return error == ENOENT || error == ENOTDIR;
}

// The names that the table has in a base's directory itself.
bool is_in_table(NodeBase base, std::string_view name)
{
    return std::ranges::any_of(node_table(), [&](const NodeRow& row) {
        const bool same_place = row.base == base ||
                                (base == NodeBase::kDebug && row.base == NodeBase::kMinor0) ||
                                (base == NodeBase::kMinor0 && row.base == NodeBase::kDebug);
        return same_place && row.path.substr(0, row.path.find('/')) == name;
    });
}

// The numbers behind "pid" in a device's text.
std::vector<int> processes_in(std::string_view text)
{
    constexpr std::string_view kKey = "pid";
    constexpr std::string_view kDigits = "0123456789";
    std::vector<int> processes;
    for (auto at = text.find(kKey); at != std::string_view::npos; at = text.find(kKey, at)) {
        at += kKey.size();
        const std::string_view line = text.substr(at, text.substr(at).find('\n'));
        const auto begin = std::min(line.find_first_of(kDigits), line.size());
        const auto number = line.substr(begin, line.substr(begin).find_first_not_of(kDigits));
        if (const auto pid = parse_number<int>(number, 1, std::numeric_limits<int>::max())) {
            processes.push_back(*pid);
        }
    }
    return processes;
}

}  // namespace

// A directory of the table, and whose.
struct NodeSampler::Base {
    std::string path;
    std::optional<int> card;
    bool va_driver = false;
};

SampledNodes NodeSampler::take(std::span<const NodeOwner> owners)
{
    for (const NodeRow& row : node_table()) {
        for (const Base& base : bases(row.base, owners)) {
            read_row(row, base);
        }
    }
    if (tools_.redactor != nullptr) {
        redact();
        drop_what_has_no_room();
    }
    SampledNodes sampled;
    for (Held& held : held_) {
        nodes_[places_.at(held.path)].bytes = held.text.size();
        sampled.texts.push_back({archive::encode_path(held.path), std::move(held.text)});
    }
    std::erase_if(nodes_, [&](const Node& node) { return absent_.contains(node.path); });
    for (Node& node : nodes_) {
        node.path = archive::encode_path(node.path);
        std::ranges::transform(node.entries, node.entries.begin(),
                               [](const auto& name) { return archive::encode_path(name); });
    }
    sampled.nodes = std::move(nodes_);
    return sampled;
}

std::vector<NodeSampler::Base> NodeSampler::bases(NodeBase base, std::span<const NodeOwner> owners)
{
    std::vector<Base> found;
    if (base == NodeBase::kProcess) {
        for (const int pid : processes_) {
            found.push_back({fmt::format("/proc/{}", pid), std::nullopt});
        }
        return found;
    }
    if (base == NodeBase::kMinor0) {
        if (open_base(base, kMinor0)) {
            found.push_back({kMinor0, 0});
        }
        return found;
    }
    for (const NodeOwner& owner : owners) {
        if (auto one = owner_base(base, owner)) {
            found.push_back(*std::move(one));
        }
    }
    return found;
}

std::optional<NodeSampler::Base> NodeSampler::owner_base(NodeBase base, const NodeOwner& owner)
{
    const bool qv = owner.vendor == QV_VENDOR_ID;
    const std::string device = "/sys/bus/pci/devices/" + owner.bus_id;
    std::string path;
    switch (base) {
        case NodeBase::kDevice:
            return Base{device, owner.card};
        case NodeBase::kProc:
            return Base{"/proc", owner.card};
        case NodeBase::kInfo:
            path = device + (qv ? "/qv_info" : "/jw_info");
            break;
        case NodeBase::kHwmon:
            path = hwmon_directory(device);
            break;
        default:
            if (!owner.card) {
                return std::nullopt;
            }
            path = fmt::format("/sys/kernel/debug/dri/{}/{}", *owner.card, qv ? "qv" : "jw");
            break;
    }
    if (path.empty() || !open_base(base, path)) {
        return std::nullopt;
    }
    const bool va_driver = va_drivers_.contains(path);
    return Base{std::move(path), owner.card, va_driver};
}

// Notes the directory itself, at the first time. False when nothing can be read in it.
bool NodeSampler::open_base(NodeBase base, const std::string& path)
{
    Node& node = directory(path);
    if (node.kind == NodeKind::kDirectory) {
        std::erase_if(node.entries,
                      [&](const std::string& name) { return !is_in_table(base, name); });
    }
    // In debugfs nodes are reached by their whole paths, which may work all the same.
    const bool by_path = base == NodeBase::kDebug || base == NodeBase::kMinor0;
    return node.kind == NodeKind::kDirectory || (by_path && !absent_.contains(path));
}

// The first entry that is a directory, as the library chooses it; empty without one.
std::string NodeSampler::hwmon_directory(const std::string& device)
{
    const std::string path = device + "/hwmon";
    if (!places_.contains(path)) {
        auto& names = directory(path).entries;
        const auto first = std::ranges::find_if(names, [&](const std::string& name) {
            return name.starts_with("hwmon") &&
                   tools_.reader.list(fmt::format("{}/{}", path, name)).error != ENOTDIR;
        });
        names.erase(names.begin(), first);
        names.resize(std::min<std::size_t>(names.size(), 1));
    }
    const auto& names = directory(path).entries;
    return names.empty() ? "" : fmt::format("{}/{}", path, names.front());
}

// What is noted of a directory; it is listed at the first time.
Node& NodeSampler::directory(const std::string& path)
{
    if (const auto place = places_.find(path); place != places_.end()) {
        return nodes_[place->second];
    }
    ListedNode listed = tools_.reader.list(path);
    tools_.advance(1);
    if (listed.error != 0) {
        add_unread(path, error_name(listed.error));
        if (means_absent(listed.error)) {
            absent_.insert(path);
        }
    } else {
        places_.emplace(path, nodes_.size());
        nodes_.push_back(
            {path, NodeKind::kDirectory, listed.mode, 0, false, std::move(listed.names), ""});
    }
    return nodes_[places_.at(path)];
}

void NodeSampler::add_unread(const std::string& path, const std::string& error)
{
    places_.emplace(path, nodes_.size());
    nodes_.push_back({path, NodeKind::kUnread, 0, 0, false, {}, error});
}

void NodeSampler::read_row(const NodeRow& row, const Base& base)
{
    if ((row.driver == NodeDriver::kVa && !base.va_driver) ||
        (row.driver == NodeDriver::kLegacy && base.va_driver)) {
        return;
    }
    if (const auto star = row.path.find('*'); star != std::string_view::npos) {
        read_entries(row, base, star);
        return;
    }
    std::string path = fmt::format("{}/{}", base.path, row.path);
    if (path.ends_with('#')) {
        if (!base.card) {
            return;
        }
        path.replace(path.size() - 1, 1, std::to_string(*base.card));
    }
    if (row.limit == 0) {
        read_names(path);
    } else {
        read_file(row, path);
    }
}

// The names in a directory that begin with its own, which is all that is looked at.
void NodeSampler::read_names(const std::string& path)
{
    const std::string prefix = path.substr(path.rfind('/') + 1) + "-";
    Node& node = directory(path);
    std::erase_if(node.entries, [&](const std::string& name) { return !name.starts_with(prefix); });
}

void NodeSampler::read_entries(const NodeRow& row, const Base& base, std::size_t star)
{
    const std::string parent = fmt::format("{}/{}", base.path, row.path.substr(0, star - 1));
    const std::vector<std::string> names = directory(parent).entries;
    const std::string_view rest = row.path.substr(star + 1);
    std::set<std::string> gone;
    for (const std::string& name : names) {
        const std::string entry = fmt::format("{}/{}", parent, name);
        const int error = read_file(
            row, fmt::format("{}{}", entry, rest == "/=" ? "/" + name : std::string{rest}));
        // An entry that has gone meanwhile is one that was never there.
        if (means_absent(error) && means_absent(tools_.reader.list(entry).error)) {
            gone.insert(name);
        }
    }
    std::erase_if(directory(parent).entries,
                  [&](const std::string& name) { return gone.contains(name); });
}

// Returns the error with which it could not be read, or 0.
int NodeSampler::read_file(const NodeRow& row, const std::string& path)
{
    if (places_.contains(path)) {
        return 0;
    }
    ReadNode node = tools_.reader.read(path, row.limit);
    tools_.advance(1);
    const int error = node.error;
    if (error == 0) {
        add_file(row, path, std::move(node));
    } else if (!means_absent(error)) {
        add_unread(path, error_name(error));
    }
    return error;
}

void NodeSampler::add_file(const NodeRow& row, const std::string& path, ReadNode node)
{
    std::string text = std::move(node.text);
    if (row.base == NodeBase::kDebug && row.path == "info" &&
        text.find("VA=1") != std::string::npos) {
        va_drivers_.insert(path.substr(0, path.rfind('/')));
    }
    note_processes(row, text);
    if (row.base == NodeBase::kProcess && row.path == "cmdline") {
        // With its end; what stands behind is nobody's business.
        if (const auto end = text.find('\0'); end != std::string::npos) {
            text.resize(end + 1);
        }
        programs_.emplace(path.substr(0, path.rfind('/')), text.substr(0, text.find('\0')));
    }
    if (!tools_.writer.has_room(text.size(), held_.size(), held_bytes_)) {
        add_unread(path, archive::kLimit);
        return;
    }
    places_.emplace(path, nodes_.size());
    nodes_.push_back({path, NodeKind::kFile, node.mode, text.size(), node.cut, {}, ""});
    held_bytes_ += text.size();
    held_.push_back({&row, path, std::move(text)});
}

void NodeSampler::note_processes(const NodeRow& row, const std::string& text)
{
    const bool in_debugfs = row.base == NodeBase::kDebug || row.base == NodeBase::kMinor0;
    if (in_debugfs && row.path.starts_with("devices/") && !row.path.ends_with("vm_info")) {
        const auto processes = processes_in(text);
        processes_.insert(processes.begin(), processes.end());
    }
}

// All names are known before a text is looked through for them.
void NodeSampler::redact()
{
    for (Held& held : held_) {
        if (held.row->base == NodeBase::kProcess) {
            held.text = redacted_process(*held.row, held.path, held.text);
        } else {
            tools_.redactor->learn(held.text);
        }
    }
    for (Held& held : held_) {
        if (held.row->base != NodeBase::kProcess) {
            held.text = tools_.redactor->text(held.text);
        }
    }
}

// Stand-ins may be longer than names.
void NodeSampler::drop_what_has_no_room()
{
    uint64_t entries = 0;
    uint64_t bytes = 0;
    std::erase_if(held_, [&](const Held& held) {
        if (tools_.writer.has_room(held.text.size(), entries, bytes)) {
            ++entries;
            bytes += held.text.size();
            return false;
        }
        nodes_[places_.at(held.path)] = {held.path, NodeKind::kUnread, 0, 0, false,
                                         {},        archive::kLimit};
        return true;
    });
}

std::string NodeSampler::redacted_process(const NodeRow& row, const std::string& path,
                                          const std::string& text)
{
    // What ends the text stays, a NUL or a newline.
    const std::size_t end = std::min(text.find_first_of(std::string_view{"\0\n", 2}), text.size());
    const std::string name = text.substr(0, end);
    const std::string program = programs_[path.substr(0, path.rfind('/'))];
    const std::string stand_in = row.path == "cmdline"
                                     ? tools_.redactor->path(name)
                                     : tools_.redactor->process_name(name, program);
    return stand_in + text.substr(end, 1);
}

}  // namespace nimba::smi
