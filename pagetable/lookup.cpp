// SPDX-License-Identifier: MIT
// Sub-table entries by the address of their table, for diagnosis.
#include "nimba_mgmt_interface.h"

#include <string>
#include <string_view>

namespace nimba {
namespace {

// The address as the dump prints it: "0x1a2b3" is the page number of "1a2b3000".
std::string dump_address(const std::string& page)
{
    return (page + "000").substr(2);
}

// Null when there is no such table or no such entry in it.
const vidmm_vm_pte_elt3k* find_entry(const std::vector<vidmm_vm_pt>& level, int32_t index,
                                     const std::string& page)
{
    if (page.empty()) {
        return nullptr;
    }
    const std::string address = dump_address(page);
    for (const vidmm_vm_pt& table : level) {
        if (table.Addr == address) {
            const vidmm_vm_pte_elt3k* entry = table.PT_sub_entries;
            while (entry != nullptr && entry->Index != index) {
                entry = entry->next;
            }
            return entry;
        }
    }
    return nullptr;
}

std::string address_of(const vidmm_vm_pte_elt3k* entry)
{
    return entry == nullptr ? "" : entry->Addr;
}

}  // namespace
}  // namespace nimba

vidmm_vm_pte_elt3k Find_SubTable_2_node(int32_t index, const data_vectors* device,
                                        const std::string& address)
{
    vidmm_vm_pte_elt3k result{};
    if (const auto* entry = nimba::find_entry(device->pt_level2, index, address)) {
        result = *entry;
        result.found = 1;
    }
    return result;
}

std::string Find_SubTable_1_addr(int32_t index, const data_vectors* device,
                                 const std::string& address)
{
    return nimba::address_of(nimba::find_entry(device->pt_level1, index, address));
}

std::string Find_SubTable_0_addr(int32_t index, const data_vectors* device,
                                 const std::string& address)
{
    return nimba::address_of(nimba::find_entry(device->pt_level0, index, address));
}
