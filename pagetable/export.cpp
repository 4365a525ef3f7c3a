// SPDX-License-Identifier: MIT
// The page tables and allocations of the last reading, as flat records.
#include "core/emptied_at_exit.hpp"
#include "core/plain_number.hpp"
#include "nimba_mgmt_interface.h"
#include "pagetable/device_arrays.hpp"

#include <cstdio>
#include <cstring>
#include <limits>
#include <string>

// Filled by get_pagetable_data without a buffer, which empties them first.
std::vector<data_vectors> Pagetable_List;
std::vector<allcation_Info> Allocation_List;

int32_t Get_Local_Data_Status = 0;

namespace nimba {
namespace {

const EmptiedAtExit pagetables_at_exit{Pagetable_List};
const EmptiedAtExit allocations_at_exit{Allocation_List};

void say_that_nothing_was_read()
{
    std::puts("\nThe function is being tested on this Chip......");
}

// As std::stoi in base 16, with its errors; faster for what drivers print.
int32_t hexadecimal(const char* text)
{
    const auto plain = plain_hexadecimal(text, std::strlen(text));
    return plain && *plain <= std::numeric_limits<int32_t>::max() ? static_cast<int32_t>(*plain)
                                                                  : std::stoi(text, nullptr, 16);
}

uint32_t Calculate_Pagetable_Size()
{
    std::size_t size = 0;
    for (const data_vectors& device : Pagetable_List) {
        for (const auto& level : kPageTables) {
            size += (device.*level.entries).size();
        }
        for (const auto& level : kSubTables) {
            size += (device.*level.entries).size();
        }
    }
    return static_cast<uint32_t>(size);
}

// Both write the entries from `record` on and move it behind them.
void Fill_Value_to_ptTable(const std::vector<vidmm_vm_pt>& entries, int32_t pid,
                           _PAGETABLE_DATA*& record)
{
    for (const vidmm_vm_pt& entry : entries) {
        _PAGETABLE_DATA data{};
        data.pid = pid;
        data.addr = hexadecimal(entry.Addr);
        data.level = entry.PT_Level;
        data.index = entry.PT_index;
        data.kind = PAGETABLE_KIND_PAGE_TABLE;
        *record++ = data;
    }
}

void Fill_Value_to_subTable(const std::vector<vidmm_vm_pte_elt3k>& entries, int32_t pid,
                            _PAGETABLE_DATA*& record)
{
    for (const vidmm_vm_pte_elt3k& entry : entries) {
        _PAGETABLE_DATA data{};
        data.pid = pid;
        data.addr = hexadecimal(entry.Addr);
        data.Snoop = entry.Snoop;
        data.Segment = entry.Segment;
        data.LargePage = static_cast<uint16_t>(entry.LargePage);
        data.level = entry.ST_Level;
        data.index = entry.Index;
        data.parent_level = entry.parent_level;
        data.parent_index = entry.parent_index;
        data.kind = PAGETABLE_KIND_SUB_TABLE;
        *record++ = data;
    }
}

void Fill_Value_to_PagetableData(_PAGETABLE_DATA* buffer)
{
    _PAGETABLE_DATA* record = buffer;
    for (const data_vectors& device : Pagetable_List) {
        const int32_t pid = std::stoi(device.pid);
        for (const auto& level : kPageTables) {
            Fill_Value_to_ptTable(device.*level.entries, pid, record);
        }
        for (const auto& level : kSubTables) {
            Fill_Value_to_subTable(device.*level.entries, pid, record);
        }
    }
}

void collect()
{
    Pagetable_List.clear();
    Allocation_List.clear();
    // Until there is a result there is none: an error of a number leaves it so, and what was read
    // before it is not handed out as if it were all.
    Get_Local_Data_Status = -1;
    Get_Local_Data_Status = get_current_PageTable_data(Pagetable_List, Allocation_List);
}

void get_pagetable_data_info(_PAGETABLE_DATA* buffer, uint32_t* count)
{
    if (buffer == nullptr) {
        collect();
    }
    if (Get_Local_Data_Status < 0) {
        say_that_nothing_was_read();
    } else if (buffer == nullptr) {
        *count = Calculate_Pagetable_Size();
    } else {
        Fill_Value_to_PagetableData(buffer);
    }
}

void get_allocation_data_info(_ALLOCATION_DATA* buffer, uint32_t* count)
{
    if (Get_Local_Data_Status < 0) {
        say_that_nothing_was_read();
        return;
    }
    if (buffer == nullptr) {
        *count = static_cast<uint32_t>(Allocation_List.size());
        return;
    }
    for (const allcation_Info& info : Allocation_List) {
        _ALLOCATION_DATA data{};
        data.device_pid = std::stoi(info.device_pid);
        data.allocation_handle = std::stoll(info.allocation_handle, nullptr, 16);
        data.size = std::stoll(info.size, nullptr, 16);
        data.gpu_va = std::stoll(info.gpu_va, nullptr, 16);
        *buffer++ = data;
    }
}

}  // namespace
}  // namespace nimba

int32_t get_pagetable_data(_PAGETABLE_DATA* buffer, uint32_t* count)
{
    nimba::get_pagetable_data_info(buffer, count);
    return 0;
}

int32_t get_allocation_data(_ALLOCATION_DATA* buffer, uint32_t* count)
{
    nimba::get_allocation_data_info(buffer, count);
    return 0;
}
