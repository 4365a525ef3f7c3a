// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>

namespace nimba::smi {

// The files of the kernel-interface library of a chip, in the order in which the management library
// tries them; none for a chip that is not known. `device_id`: its PCI device identifier.
std::span<const char* const> kernel_interface_files(uint32_t device_id);

}  // namespace nimba::smi
