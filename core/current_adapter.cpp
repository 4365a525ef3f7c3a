// SPDX-License-Identifier: MIT
#include "core/current_adapter.hpp"

#include "core/node_access.hpp"

#include <cstdio>

int32_t __perf_event_fd = 0;
struct gpu_infos* pCurrent_gpu_infos = nullptr;
char sys_bus_pci_devices_BUSID_path[60] = "";
char sys_kernel_debug_ID_dri_ADAPTER_path[50] = "";

namespace nimba {

uint32_t current_chip_id = 0;
int32_t current_is_va_driver = 0;

int info_directory()
{
    return pCurrent_gpu_infos == nullptr ? -1 : pCurrent_gpu_infos->jw_info_dir_fd;
}

int hwmon_directory()
{
    return pCurrent_gpu_infos == nullptr ? -1 : pCurrent_gpu_infos->hwmon_dir_fd;
}

void select_adapter(find_adapter& rec)
{
    const int32_t slot = rec.chip_id_idx;
    current_chip_id = rec.header.chip_id[slot];
    current_is_va_driver = rec.header.IS_VA_driver[slot];
    __perf_event_fd = rec.header.drm_fd[slot];
    gpuinfo_select_new_chip(&rec);
}

}  // namespace nimba

int32_t gpuinfo_select_new_chip(find_adapter* rec)
{
    const int32_t slot = rec->chip_id_idx;
    pCurrent_gpu_infos = &rec->gpu_infos[slot];
    // The texts are the host's: they may fill their fields without a NUL.
    std::snprintf(sys_bus_pci_devices_BUSID_path, sizeof sys_bus_pci_devices_BUSID_path,
                  "/sys/bus/pci/devices/%.*s", static_cast<int>(sizeof pCurrent_gpu_infos->busid),
                  pCurrent_gpu_infos->busid);
    lib_print_func("gpuinfo_select_new_chip index: %d, name: %.*s \n", slot,
                   static_cast<int>(sizeof rec->header.chip_name[slot]),
                   rec->header.chip_name[slot]);
    return 0;
}

int32_t gpuinfo_set_enable_usage(const char* text)
{
    // The text is the format itself: callers pass "1" or "0".
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
    return nimba::printf_node_at(nimba::info_directory(), "enable_usage", text);
#pragma GCC diagnostic pop
}
