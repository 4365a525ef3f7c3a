// SPDX-License-Identifier: MIT
// The part of the management library that the commands about settings alone need: it is looked up
// when it is needed, so that the other commands also work with a library that lacks it.
#pragma once

#include "nimba_mgmt_interface.h"
#include "tools/smi/worker/library.hpp"

#include <string>
#include <variant>

namespace nimba::smi {

struct DvfsEntryPoints {
    decltype(&::gpuinfo_select_new_chip) select_new_chip = nullptr;
    decltype(&::get_data_from_dvfs_register) get_data = nullptr;
    decltype(&::set_data_to_dvfs_register) set_data = nullptr;
    decltype(&::gpuinfo_get_jwinfoFD_value_int) get_info_value = nullptr;
    decltype(&::gpuinfo_set_misc_ctl_flag) set_flag = nullptr;
};

// Looks the entry points up. Returns them, or what is wrong with the library.
std::variant<DvfsEntryPoints, std::string> find_dvfs_entry_points(const Library& library);

}  // namespace nimba::smi
