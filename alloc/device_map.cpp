// SPDX-License-Identifier: MIT
// The open device contexts and their processes.
#include "alloc/key_value.hpp"
#include "core/current_adapter.hpp"
#include "core/debug_directory.hpp"
#include "core/entries.hpp"
#include "core/node_pieces.hpp"
#include "nimba_mgmt_interface.h"

#include <cstdio>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

namespace nimba {
namespace {

// Drivers of the two kinds name the node differently. Relative to the directory of the devices.
std::string node_path(const std::string& entry, bool va_driver)
{
    return entry + '/' + (va_driver ? "info" : entry);
}

// The name is looked up at each "pid": a second one whose process has no name leaves the first's.
void take_line(std::string_view line, gfx_device_pid& entry)
{
    const auto parts = split_device_line(line);
    if (!parts) {
        return;
    }
    if (parts->key == "pid") {
        entry.pid = low_bits_of_number(parts->value);
        getPackageNameFromPid(entry.pid, entry.process_name, sizeof entry.process_name);
    } else if (parts->key == "handle") {
        entry.handle = number_in_range(parts->value, 16);
    }
}

// Fills the entries in listing order, each once its node is read. Returns 0, or -1 when the listing
// or a node fails.
int32_t list_devices(Entries& devices, bool va_driver, _GFX_DEVICE_PID_MAP& map)
{
    NodePieces node;
    auto* next_entry = std::begin(map.entries);
    while (const char* name = devices.next()) {
        const std::string path = node_path(name, va_driver);
        gfx_device_pid entry{};
        const auto take = [&](std::string_view lines) {
            for_each_line(lines, [&](std::string_view line) { take_line(line, entry); });
        };
        if (!node.read_at(devices.fd(), path.c_str(), take)) {
            // Despite the wording the listing ends.
            std::puts("Fail to read devices info. skip...");
            return -1;
        }
        *next_entry = entry;
        // Said as soon as the map is full, whether or not another device follows.
        if (++next_entry == std::end(map.entries)) {
            std::puts("exceed ALLOCATION_SUMMARY_MAX!!! ");
            return 0;
        }
    }
    return devices.failed() ? -1 : 0;
}

}  // namespace
}  // namespace nimba

int32_t get_device_pid_maps(_GFX_DEVICE_PID_MAP* buffer)
{
    return get_device_pid_maps_internal(buffer, nimba::current_chip_id,
                                        nimba::current_is_va_driver);
}

int32_t get_device_pid_maps_internal(_GFX_DEVICE_PID_MAP* buffer, uint32_t /*chip_id*/,
                                     int32_t va_driver)
{
    *buffer = {};
    nimba::Directory directory = nimba::open_debug_directory("devices");
    if (!directory) {
        std::puts("Error opening directory");
        return -1;
    }
    nimba::Entries devices{std::move(directory)};
    return nimba::list_devices(devices, va_driver != 0, *buffer);
}
