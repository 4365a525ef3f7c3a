// SPDX-License-Identifier: MIT
// What discovery reads of a recognised adapter from sysfs and debugfs.
#pragma once

#include "core/chip_table.hpp"

namespace nimba {

// Opens the directories of the adapter whose busid stands in `infos`: its PCI directory, the first
// directory "hwmon*" in its "hwmon", and the driver's info directory. pci_dir_fd is always written,
// the other two only when they open.
void open_sysfs_directories(gpu_infos& infos, const ChipFamily& family);

// Whether the driver's info node in debugfs says "VA=1". A node that cannot be read says nothing.
bool is_va_driver(int32_t card, const ChipFamily& family);

}  // namespace nimba
