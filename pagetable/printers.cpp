// SPDX-License-Identifier: MIT
// Entries as lines on standard output, for diagnosis.
#include "nimba_mgmt_interface.h"

#include <cstdio>

void Print_PageTable(const vidmm_vm_pt* entry)
{
    std::printf(
        "PT_Level:%d  PT_index:%d  PT_entry:%p  PT_sub_entries:%p  parent:%p  entries:%p"
        "  pre:%p  next:%p  Addr:%s  Buffer:%s\n",
        entry->PT_Level, entry->PT_index, static_cast<const void*>(entry),
        static_cast<const void*>(entry->PT_sub_entries), static_cast<const void*>(entry->parent),
        static_cast<const void*>(entry->entries), static_cast<const void*>(entry->pre),
        static_cast<const void*>(entry->next), entry->Addr, entry->Buffer);
}

void Print_SubTable(const vidmm_vm_pte_elt3k* entry)
{
    std::printf("ST_LeveL:%d  Index:%d  sub_entry:%p  parent:%p  pre:%p  next:%p  Addr:%s\n",
                entry->ST_Level, entry->Index, static_cast<const void*>(entry),
                static_cast<const void*>(entry->parent), static_cast<const void*>(entry->pre),
                static_cast<const void*>(entry->next), entry->Addr);
}
