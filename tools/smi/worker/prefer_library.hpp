// SPDX-License-Identifier: MIT
// The part of the management library that the command about preferences alone needs: it is looked
// up when it is needed, so that the other commands also work with a library that lacks it.
#pragma once

#include "nimba_mgmt_interface.h"
#include "tools/smi/worker/library.hpp"

#include <string>
#include <variant>

namespace nimba::smi {

struct PreferEntryPoints {
    decltype(&::get_gpu_preference) get = nullptr;
    decltype(&::set_gpu_preference) set = nullptr;
    decltype(&::remove_gpu_preference) remove = nullptr;
};

// Looks the entry points up. Returns them, or what is wrong with the library.
std::variant<PreferEntryPoints, std::string> find_prefer_entry_points(const Library& library);

}  // namespace nimba::smi
