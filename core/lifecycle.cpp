// SPDX-License-Identifier: MIT
// Start-up and shut-down of the library for one adapter.
#include "core/chip_table.hpp"
#include "core/current_adapter.hpp"
#include "core/kernel_interface.hpp"
#include "nimba_mgmt_interface.h"

#include <cstdio>

namespace nimba {
namespace {

void write_debug_path(const Chip& chip, int32_t card)
{
    std::snprintf(sys_kernel_debug_ID_dri_ADAPTER_path, sizeof sys_kernel_debug_ID_dri_ADAPTER_path,
                  "/sys/kernel/debug/dri/%d/%s", card, find_family(chip.vendor_id)->driver_dir);
}

// The debug directory is set whether or not the library loads; a chip that is not known leaves it
// as it was, and leaves no library loaded.
void set_up_chip(int32_t card)
{
    const Chip* chip = find_chip(current_chip_id);
    if (chip == nullptr) {
        lib_print_func("invalidate chip id. \n ");
        hwbridge_module_handle = SharedLibrary{};
        return;
    }
    hwbridge_module_handle = load_kernel_interface(*chip);
    write_debug_path(*chip, card);
}

void switch_usage_accounting(const char* text)
{
    if (current_chip_id != 0) {
        gpuinfo_set_enable_usage(text);
    }
}

}  // namespace
}  // namespace nimba

int32_t gfx_global_init(find_adapter* rec)
{
    nimba::select_adapter(*rec);
    initGPUPreference_config();
    nimba::set_up_chip(rec->header.drm_card_idx[rec->chip_id_idx]);
    nimba::switch_usage_accounting("1");
    if (!nimba::hwbridge_module_handle) {
        lib_print_func("open libhwbridge module fail. \n ");
        return -1;
    }
    return nimba::allocate_device_block() ? static_cast<int32_t>(nimba::current_chip_id) : -1;
}

int32_t gfx_global_exit(int32_t chip_id_idx)
{
    lib_print_func("gfx_global_exit enter, chip_id_idx: %d \n", chip_id_idx);
    nimba::switch_usage_accounting("0");
    nimba::hwbridge_module_handle = nimba::SharedLibrary{};
    nimba::free_device_block();
    uninitGPUPreference_config();
    return 0;
}
