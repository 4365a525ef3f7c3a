// SPDX-License-Identifier: MIT
#include "tools/smi/worker/page_table_library.hpp"

#include "tools/smi/worker/symbols.hpp"

namespace nimba::smi {
namespace {

constexpr Symbol<PageTableEntryPoints> kSymbols[] = {
    {"get_pagetable_data", store<&PageTableEntryPoints::get_pagetable_data>},
    {"Get_Local_Data_Status", store<&PageTableEntryPoints::status>},
    {"Pagetable_List", store<&PageTableEntryPoints::devices>},
    {"Allocation_List", store<&PageTableEntryPoints::allocations>},
};

}  // namespace

std::variant<PageTableEntryPoints, std::string> find_page_table_entry_points(const Library& library)
{
    PageTableEntryPoints entry;
    if (auto fault = find_symbols<PageTableEntryPoints>(library.handle.get(), library.path,
                                                        kSymbols, entry)) {
        return *std::move(fault);
    }
    return entry;
}

}  // namespace nimba::smi
