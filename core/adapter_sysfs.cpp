// SPDX-License-Identifier: MIT
#include "core/adapter_sysfs.hpp"

#include "core/handles.hpp"
#include "core/node_access.hpp"

#include <fcntl.h>

#include <cerrno>
#include <cstdio>
#include <string_view>

namespace nimba {
namespace {

void store_if_open(Descriptor directory, int32_t& field)
{
    if (directory) {
        field = directory.release();
    }
}

// The first entry of `listing` that is a directory and begins with "hwmon", opened; empty when
// there is none or it does not open.
Descriptor open_hwmon_entry(const Directory& listing)
{
    while (const dirent* entry = ::readdir(listing.get())) {
        if (!std::string_view{entry->d_name}.starts_with("hwmon")) {
            continue;
        }
        Descriptor directory{::openat(::dirfd(listing.get()), entry->d_name,
                                      O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)};
        const bool no_directory = !directory && (errno == ENOTDIR || errno == ELOOP);
        if (!no_directory) {
            return directory;
        }
    }
    return Descriptor{-1};
}

}  // namespace

void open_sysfs_directories(gpu_infos& infos, const ChipFamily& family)
{
    char path[60];
    std::snprintf(path, sizeof path, "/sys/bus/pci/devices/%s", infos.busid);
    infos.pci_dir_fd = ::open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (infos.pci_dir_fd < 0) {
        return;
    }
    const Directory listing = make_directory(
        Descriptor{::openat(infos.pci_dir_fd, "hwmon", O_RDONLY | O_DIRECTORY | O_CLOEXEC)});
    if (listing) {
        store_if_open(open_hwmon_entry(listing), infos.hwmon_dir_fd);
    }
    store_if_open(
        Descriptor{::openat(infos.pci_dir_fd, family.info_dir, O_RDONLY | O_DIRECTORY | O_CLOEXEC)},
        infos.jw_info_dir_fd);
}

bool is_va_driver(int32_t card, const ChipFamily& family)
{
    char path[128];
    std::snprintf(path, sizeof path, "/sys/kernel/debug/dri/%d/%s/info", card, family.driver_dir);
    char text[128] = {};
    const int length = read_node_at(0, path, text, sizeof text);
    return std::string_view{text, static_cast<std::size_t>(length)}.find("VA=1") !=
           std::string_view::npos;
}

}  // namespace nimba
