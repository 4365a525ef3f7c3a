// SPDX-License-Identifier: MIT
#include "tools/smi/worker/drm_nodes.hpp"

#include "nimba_mgmt_interface.h"
#include "tools/descriptor.hpp"
#include "tools/smi/worker/driver_files.hpp"

#include <fcntl.h>
#include <grp.h>
#include <unistd.h>

#include <fmt/core.h>
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

// The path, when this user is refused what `mode` of access asks for.
std::optional<DeniedFile> denied_file(const std::string& path, int mode)
{
    if (::access(path.c_str(), mode) == 0 || (errno != EACCES && errno != EPERM)) {
        return std::nullopt;
    }
    return DeniedFile{path, group_of(path)};
}

// A device without a vendor is none of PCI, and so none of the product's.
Maker maker_of(const std::string& device_link)
{
    const tools::Descriptor directory{
        ::open(device_link.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
    if (!directory) {
        return Maker::kUnknown;
    }
    if (const auto vendor = pci_id_in(directory.get(), "vendor")) {
        return *vendor == NIMBA_VENDOR_ID || *vendor == QV_VENDOR_ID ? Maker::kProduct
                                                                     : Maker::kOther;
    }
    return exists(device_link + "/vendor") ? Maker::kUnknown : Maker::kOther;
}

// The device's directory; a node without one counts as a device of its own.
std::string device_of(const std::string& name, const std::string& device_link)
{
    std::error_code error;
    const auto device = std::filesystem::canonical(device_link, error);
    return error ? name : device.string();
}

struct Device {
    bool usable = false;
    Maker maker = Maker::kUnknown;
    DeniedFile node;  // the one to ask for access to
};

std::map<std::string_view, Device> devices_behind(std::span<const DrmNode> nodes)
{
    std::map<std::string_view, Device> devices;
    for (const DrmNode& node : nodes) {
        const auto [device, first] = devices.try_emplace(node.device);
        DeniedFile file{node.path, node.group};
        device->second.usable |= !node.denied;
        device->second.maker = node.maker;
        if (first || is_render_node(file)) {
            device->second.node = std::move(file);
        }
    }
    return devices;
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
            const std::string device_link = fmt::format("{}/{}/device", class_dir, name);
            nodes.push_back({path, device_of(name, device_link),
                             denied_file(path, R_OK | W_OK).has_value(), group_of(path),
                             maker_of(device_link)});
        }
    }
    std::ranges::sort(nodes, {}, &DrmNode::path);
    return nodes;
}

std::optional<DeniedFile> denied_directory(const std::string& node_dir)
{
    return denied_file(node_dir, R_OK | X_OK);
}

std::vector<DeniedFile> denied_devices(std::span<const DrmNode> nodes)
{
    std::vector<DeniedFile> denied;
    for (const auto& [directory, device] : devices_behind(nodes)) {
        if (!device.usable && device.maker != Maker::kOther) {
            denied.push_back(device.node);
        }
    }
    return denied;
}

int device_count(std::span<const DrmNode> nodes)
{
    return static_cast<int>(devices_behind(nodes).size());
}

std::vector<std::string> product_devices(std::span<const DrmNode> nodes)
{
    std::vector<std::string> bus_ids;
    for (const auto& [directory, device] : devices_behind(nodes)) {
        if (device.usable && device.maker == Maker::kProduct) {
            bus_ids.push_back(std::filesystem::path(directory).filename());
        }
    }
    return bus_ids;
}

}  // namespace nimba::smi
