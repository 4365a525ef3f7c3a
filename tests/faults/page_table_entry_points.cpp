// SPDX-License-Identifier: MIT
// GPU page tables.
#include "entry_point.hpp"

#include <array>
#include <vector>

namespace nimba::test {
namespace {

constexpr const char* kInfo = "/sys/kernel/debug/dri/0/qv/devices/1/info";
constexpr const char* kDump = "/sys/kernel/debug/dri/0/qv/devices/1/vm_info";

using Devices = std::vector<data_vectors>;
using Allocations = std::vector<allcation_Info>;

std::string told_entry(const vidmm_vm_pt& entry)
{
    return std::to_string(entry.PT_Level) + ":" + std::to_string(entry.PT_index) + " " +
           entry.Addr + " " + entry.Buffer;
}

std::string told_entry(const vidmm_vm_pte_elt3k& entry)
{
    return std::to_string(entry.ST_Level) + ":" + std::to_string(entry.Index) + " " + entry.Addr +
           " " + std::to_string(entry.Snoop) + " " + std::to_string(entry.Segment) + " " +
           std::to_string(entry.LargePage) + " of " + std::to_string(entry.parent_level) + ":" +
           std::to_string(entry.parent_index);
}

// How many there are of each level, the first and the last, and a sum of all.
template <typename Entry>
std::string told_entries(const std::array<const std::vector<Entry>*, 3>& levels)
{
    std::string told;
    std::string all;
    for (const std::vector<Entry>* level : levels) {
        told += (told.empty() ? "" : "+") + std::to_string(level->size());
        for (const Entry& entry : *level) {
            all += (all.empty() ? "" : "\n") + told_entry(entry);
        }
    }
    if (!all.empty()) {
        told += " (" + all.substr(0, all.find('\n')) + " to " + all.substr(all.rfind('\n') + 1) +
                ", " + checksum(all) + ")";
    }
    return told;
}

std::string told_device(const data_vectors& device)
{
    return std::string{device.pid} + " \"" + device.app_name + "\" tables " +
           told_entries(std::array{&device.pt_level0, &device.pt_level1, &device.pt_level2}) +
           " sub-tables " +
           told_entries(std::array{&device.st_level0, &device.st_level1, &device.st_level2});
}

std::string told_devices(const Devices& devices)
{
    std::string told;
    for (const data_vectors& device : devices) {
        told += (told.empty() ? "" : ", ") + told_device(device);
    }
    return told;
}

std::string told_allocations(const Allocations& allocations)
{
    std::string told = "allocations";
    for (const allcation_Info& allocation : allocations) {
        told += " " + allocation.allocation_handle + "(" + allocation.device_pid + " \"" +
                allocation.device_pname + "\" " + allocation.gpu_va + " " + allocation.size + ")";
    }
    return told;
}

template <std::int32_t (*read)(Devices&)>
Answer devices_read(Attempt& attempt)
{
    Answer answer;
    Devices devices;
    answer.status = attempt([&] { return read(devices); });
    answer.told = answer.bytes = told_devices(devices);
    return answer;
}

template <std::int32_t (*read)(Allocations&)>
Answer allocations_read(Attempt& attempt)
{
    Answer answer;
    Allocations allocations;
    answer.untouched = told_allocations(allocations);
    answer.status = attempt([&] { return read(allocations); });
    answer.told = answer.bytes = told_allocations(allocations);
    return answer;
}

Answer all_read(Attempt& attempt)
{
    Answer answer;
    Devices devices;
    Allocations allocations;
    answer.status = attempt([&] { return get_current_PageTable_data(devices, allocations); });
    answer.told = answer.bytes = told_devices(devices) + "; " + told_allocations(allocations);
    return answer;
}

template <typename Call>
Answer device_filled(Attempt& attempt, const char* pid, Call&& call)
{
    Answer answer;
    data_vectors device{};
    std::strcpy(device.pid, pid);
    answer.untouched = told_device(device);
    answer.status = attempt([&] { return call(device); });
    answer.told = answer.bytes = told_device(device);
    return answer;
}

Answer process_read(Attempt& attempt)
{
    return device_filled(attempt, "1", [](auto& device) { return get_Pid_info(&device, kInfo); });
}

Answer name_read(Attempt& attempt)
{
    return device_filled(attempt, "1", [](auto& device) { return get_AppName_info(&device); });
}

Answer dump_read(Attempt& attempt)
{
    return device_filled(attempt, "1",
                         [](auto& device) { return get_pagetable_info(&device, kDump); });
}

// How the collection ended, and what of it is kept.
std::string told_kept()
{
    return "state " + std::to_string(Get_Local_Data_Status) + ", " + told_devices(Pagetable_List) +
           "; " + told_allocations(Allocation_List);
}

Answer collected(Attempt& attempt)
{
    std::uint32_t count = 99;
    Answer answer;
    answer.status = attempt([&] { return get_pagetable_data(nullptr, &count); });
    answer.told = answer.bytes = std::to_string(count) + " records; " + told_kept();
    return answer;
}

// How many records there are to copy.
std::uint32_t page_table_count = 0;
std::uint32_t allocation_count = 0;

void collect()
{
    get_pagetable_data(nullptr, &page_table_count);
    get_allocation_data(nullptr, &allocation_count);
}

std::string told_record(const _PAGETABLE_DATA& record)
{
    std::string told;
    for (const std::int64_t figure :
         {record.pid, record.addr, std::int64_t{record.Snoop}, std::int64_t{record.Segment},
          std::int64_t{record.LargePage}, std::int64_t{record.level}, std::int64_t{record.index},
          std::int64_t{record.parent_level}, std::int64_t{record.parent_index},
          std::int64_t{record.kind}}) {
        told += (told.empty() ? "" : " ") + std::to_string(figure);
    }
    return told;
}

std::string told_record(const _ALLOCATION_DATA& record)
{
    return std::to_string(record.allocation_handle) + " of " + std::to_string(record.device_pid) +
           " " + std::to_string(record.size) + " at " + std::to_string(record.gpu_va);
}

template <typename Record, typename Call>
Answer copied(Attempt& attempt, std::uint32_t count, Call&& call)
{
    std::vector<Record> records(count, patterned<Record>());
    const auto bytes = [&] {
        return std::string{reinterpret_cast<const char*>(records.data()),
                           records.size() * sizeof(Record)};
    };
    Answer answer;
    answer.untouched = bytes();
    answer.status = attempt([&] { return call(records.data()); });
    answer.bytes = bytes();
    answer.told = std::to_string(count) + " records";
    if (count > 0) {
        answer.told += ", " + told_record(records.front()) + " to " + told_record(records.back()) +
                       ", " + checksum(answer.bytes);
    }
    return answer;
}

Answer tables_copied(Attempt& attempt)
{
    return copied<_PAGETABLE_DATA>(attempt, page_table_count, [](auto* records) {
        return get_pagetable_data(records, nullptr);
    });
}

Answer allocations_copied(Attempt& attempt)
{
    return copied<_ALLOCATION_DATA>(attempt, allocation_count, [](auto* records) {
        return get_allocation_data(records, nullptr);
    });
}

constexpr const char* kNoTables =
    "-1 ; allocations 1(4100001 \"viewer\" 100000000 400000) "
    "2(4100001 \"viewer\" 100400000 40000) 3(4100002 \"maze\" 100440000 100000)";
constexpr const char* kNoTablesKept =
    "0 99 records; state -1, ; allocations 1(4100001 \"viewer\" 100000000 400000) "
    "2(4100001 \"viewer\" 100400000 40000) 3(4100002 \"maze\" 100440000 100000)";

constexpr std::array kEntryPoints{
    EntryPoint{"get_Pid_info", -1, nullptr, process_read, false},
    EntryPoint{"get_AppName_info", -1, nullptr, name_read, false, true},
    EntryPoint{"get_pagetable_info", -1, nullptr, dump_read, false},
    EntryPoint{"get_PageTable_data", -1, nullptr, devices_read<get_PageTable_data>, false, true},
    EntryPoint{"get_PageTable_data_try", -1, nullptr, devices_read<get_PageTable_data_try>, false,
               true},
    EntryPoint{"get_alloction_data_try", -1, nullptr, allocations_read<get_alloction_data_try>,
               false},
    EntryPoint{"get_alloction_data", -1, nullptr, allocations_read<get_alloction_data>, false},
    without_driver(EntryPoint{"get_current_PageTable_data", -1, nullptr, all_read, false, true},
                   kNoTables, "-1 ; allocations"),
    without_driver(EntryPoint{"get_pagetable_data", -1, nullptr, collected, false, true},
                   kNoTablesKept, "0 99 records; state -1, ; allocations"),
    without_calls(
        EntryPoint{"get_pagetable_data, with a buffer", -1, collect, tables_copied, false, true}),
    without_calls(EntryPoint{"get_allocation_data", -1, collect, allocations_copied, false, true}),
};

}  // namespace

std::span<const EntryPoint> page_table_entry_points()
{
    return kEntryPoints;
}

}  // namespace nimba::test
