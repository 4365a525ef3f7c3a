// SPDX-License-Identifier: MIT
#include "tools/smi/worker/drm_nodes.hpp"

#include <grp.h>
#include <unistd.h>

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <map>
#include <string_view>

namespace nimba::smi {
namespace {

constexpr std::string_view kNodePrefixes[] = {"card", "controlD", "renderD"};

bool is_node_name(const std::string& name)
{
    return std::ranges::any_of(kNodePrefixes,
                               [&](std::string_view prefix) { return name.starts_with(prefix); });
}

bool is_render_node(const DeniedFile& node)
{
    return std::filesystem::path(node.path).filename().string().starts_with("renderD");
}

std::string group_of(const std::string& path)
{
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0 || status.st_gid == 0 ||
        (status.st_mode & S_IRWXG) == 0) {
        return {};
    }
    const group* const entry = ::getgrgid(status.st_gid);
    return entry == nullptr ? std::string{} : entry->gr_name;
}

// The device's directory; a node without one counts as a device of its own.
std::string device_of(const std::string& name, const std::string& class_dir)
{
    std::error_code error;
    const auto device = std::filesystem::canonical(class_dir + "/" + name + "/device", error);
    return error ? name : device.string();
}

}  // namespace

std::vector<DrmNode> drm_nodes(const std::string& node_dir, const std::string& class_dir)
{
    std::vector<DrmNode> nodes;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(node_dir, error)) {
        const std::string name = entry.path().filename();
        if (is_node_name(name)) {
            const std::string& path = entry.path().native();
            const bool denied =
                ::access(path.c_str(), R_OK | W_OK) != 0 && (errno == EACCES || errno == EPERM);
            nodes.push_back({path, device_of(name, class_dir), denied, group_of(path)});
        }
    }
    std::ranges::sort(nodes, {}, &DrmNode::path);
    return nodes;
}

std::vector<DeniedFile> denied_devices(std::span<const DrmNode> nodes)
{
    struct Device {
        bool usable = false;
        DeniedFile node;
    };
    std::map<std::string_view, Device> devices;
    for (const DrmNode& node : nodes) {
        const auto [device, first] = devices.try_emplace(node.device);
        DeniedFile file{node.path, node.group};
        device->second.usable |= !node.denied;
        if (first || is_render_node(file)) {
            device->second.node = std::move(file);
        }
    }
    std::vector<DeniedFile> denied;
    for (const auto& [directory, device] : devices) {
        if (!device.usable) {
            denied.push_back(device.node);
        }
    }
    return denied;
}

}  // namespace nimba::smi
