// SPDX-License-Identifier: MIT
// The virtual-memory nodes of all allocations.
#include "core/retry.hpp"
#include "core/whole_node.hpp"
#include "nimba_mgmt_interface.h"
#include "pagetable/root_directory.hpp"
#include "pagetable/vm_node_text.hpp"

#include <cstdio>
#include <string>
#include <utility>

namespace nimba {
namespace {

constexpr useconds_t kPause = 1'000;  // microseconds

allcation_Info parse_vm_node(std::string_view block, const char* handle)
{
    const auto value = [&](std::string_view key) { return std::string{vm_node_value(block, key)}; };
    allcation_Info info;
    info.device_pname = value("device_pname");
    info.device_pid = value("device_pid");
    info.allocation_handle = handle;
    info.gpu_va = value("gpu_va");
    info.size = value("size");
    return info;
}

}  // namespace
}  // namespace nimba

int32_t get_alloction_data_try(std::vector<allcation_Info>& list)
{
    nimba::Directory directory = nimba::open_root_directory("allocations");
    if (!directory) {
        return -1;
    }
    nimba::Entries entries{std::move(directory)};
    std::string path;  // relative to the directory
    std::string text;
    while (const char* entry = entries.next()) {
        path.assign(entry).append("/vm_info");
        if (!nimba::read_whole_node(entries.fd(), path.c_str(), text)) {
            // The pass ends. Callers rely on what it read staying in the list.
            std::puts("Fail to read allocation info.. skip and try it again...");
            return -1;
        }
        nimba::for_each_vm_node(text, [&](std::string_view block) {
            list.push_back(nimba::parse_vm_node(block, entry));
        });
    }
    return entries.failed() ? -1 : 0;
}

int32_t get_alloction_data(std::vector<allcation_Info>& list)
{
    return nimba::try_passes(nimba::kPause, [&] { return get_alloction_data_try(list); });
}
