// SPDX-License-Identifier: MIT
// The page tables of one device: their arrays, and who owns whom.
#include "nimba_mgmt_interface.h"
#include "pagetable/device_arrays.hpp"

void create_vector(data_vectors& device)
{
    device.note.clear();
    for (const auto& level : nimba::kPageTables) {
        nimba::reserve(device, device.*level.entries, level.usual_capacity);
    }
    for (const auto& level : nimba::kSubTables) {
        nimba::reserve(device, device.*level.entries, level.usual_capacity);
    }
}

void clean_vector(data_vectors* device)
{
    for (const auto& level : nimba::kPageTables) {
        (device->*level.entries).clear();
    }
    for (const auto& level : nimba::kSubTables) {
        (device->*level.entries).clear();
    }
}

void append_DigitalIndex(vidmm_vm_pte_elt3k& entry)
{
    const vidmm_vm_pt* const owner = entry.parent;
    if (entry.pre != nullptr || owner == nullptr) {
        return;
    }
    for (vidmm_vm_pte_elt3k* each = &entry; each != nullptr; each = each->next) {
        each->parent_level = owner->PT_Level;
        each->parent_index = owner->PT_index;
    }
}

void generate_DigitalIndex(data_vectors& device)
{
    for (const auto& level : nimba::kSubTables) {
        for (vidmm_vm_pte_elt3k& entry : device.*level.entries) {
            append_DigitalIndex(entry);
        }
    }
}
