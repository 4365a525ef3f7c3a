// SPDX-License-Identifier: MIT
// The part of the management library that one command alone needs: it is looked up when it is
// needed, so that the other commands also work with a library that lacks it.
#pragma once

#include "nimba_mgmt_interface.h"
#include "tools/smi/worker/library.hpp"

#include <string>
#include <variant>

namespace nimba::smi {

struct PageTableEntryPoints {
    decltype(&::get_pagetable_data) get_pagetable_data = nullptr;
    decltype(&::Get_Local_Data_Status) status = nullptr;
    decltype(&::Pagetable_List) devices = nullptr;
    decltype(&::Allocation_List) allocations = nullptr;
};

// Looks the entry points up. Returns them, or what is wrong with the library.
std::variant<PageTableEntryPoints, std::string> find_page_table_entry_points(
    const Library& library);

}  // namespace nimba::smi
