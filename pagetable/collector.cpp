// SPDX-License-Identifier: MIT
// The page tables of all devices.
#include "core/entries.hpp"
#include "core/retry.hpp"
#include "nimba_mgmt_interface.h"
#include "pagetable/root_directory.hpp"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>
#include <utility>

namespace nimba {
namespace {

constexpr useconds_t kPause = 1'000;  // microseconds

constexpr const char* kDevices = "devices";

// Devices of the driver's own, which belong to no process.
constexpr std::array<std::string_view, 2> kSystemDevices{"00000000", "02000000"};

bool is_system_device(std::string_view entry)
{
    return std::ranges::find(kSystemDevices, entry) != kSystemDevices.end();
}

// Makes the record that of a device of which nothing is known yet.
void start_device(data_vectors& device)
{
    create_vector(device);
    clean_vector(&device);
    std::ranges::fill(device.pid, '\0');
}

bool read_device(const char* entry, data_vectors& device)
{
    start_device(device);
    return get_Pid_info(&device, node_path(kDevices, entry, "info").data()) >= 0 &&
           get_AppName_info(&device) >= 0 &&
           get_pagetable_info(&device, node_path(kDevices, entry, "vm_info").data()) >= 0;
}

}  // namespace
}  // namespace nimba

int32_t get_PageTable_data(std::vector<data_vectors>& list)
{
    nimba::Directory directory = nimba::open_root_directory(nimba::kDevices);
    if (!directory) {
        return -1;
    }
    nimba::Entries entries{std::move(directory)};
    data_vectors device{};  // for one device after the other: its arrays are allocated once
    while (const char* entry = entries.next()) {
        if (nimba::is_system_device(entry)) {
            continue;
        }
        if (!nimba::read_device(entry, device)) {
            return -1;
        }
        if (std::string_view{device.app_name} != "0") {
            generate_DigitalIndex(device);
            list.push_back(device);
        }
    }
    return entries.failed() ? -1 : 0;
}

int32_t get_PageTable_data_try(std::vector<data_vectors>& list)
{
    return nimba::try_passes(nimba::kPause, [&] { return get_PageTable_data(list); });
}

int32_t get_current_PageTable_data(std::vector<data_vectors>& pagetables,
                                   std::vector<allcation_Info>& allocations)
{
    const int32_t allocation_status = get_alloction_data(allocations);
    const int32_t pagetable_status = get_PageTable_data_try(pagetables);
    return allocation_status >= 0 && pagetable_status >= 0 ? 0 : -1;
}
