// SPDX-License-Identifier: MIT
// Which adapter is current. The state is written by gfx_global_init, in part through
// gpuinfo_select_new_chip, and stays until the next initialisation, also after gfx_global_exit.
#pragma once

#include "nimba_mgmt_interface.h"

namespace nimba {

// chip_id of the current slot; 0: no adapter.
extern uint32_t current_chip_id;

// IS_VA_driver of the current slot.
extern int32_t current_is_va_driver;

// The current adapter's directories of nodes; -1 before there is one.
int info_directory();
int hwmon_directory();

// Makes the slot rec.chip_id_idx current, but for the debug directory, which goes by the chip.
void select_adapter(find_adapter& rec);

}  // namespace nimba
