// SPDX-License-Identifier: MIT
// What the firmware of a simulated machine says of its memory, for dmidecode(8).
#pragma once

#include "machine.hpp"

#include <string>
#include <vector>

namespace nimba::sim {

// Files of /sys/firmware/dmi/tables.
struct SmbiosFiles {
    std::string smbios_entry_point;
    std::string dmi;
};

// Returns an entry point of SMBIOS 3.0 and its table: one memory array with these modules.
SmbiosFiles make_smbios_files(const std::vector<MemoryModule>& modules);

}  // namespace nimba::sim
