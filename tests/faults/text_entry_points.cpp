// SPDX-License-Identifier: MIT
// The parts of texts, and what is looked up in page tables.
#include "entry_point.hpp"

#include <array>
#include <string>
#include <utility>
#include <vector>

namespace nimba::test {
namespace {

// Too long to stand in a std::string itself: each copy is memory.
const std::string kValue = "a-value-that-is-longer-than-a-text-without-memory";
const std::string kDigits = "00000000000000000000000000000000000000000000000012";
const std::string kAddress = "0x1a2b3c4d5e6f7a8b9c0d1e2f3a4b5c6d7e8f9a0b";

std::string told_texts(const std::vector<std::string>& texts)
{
    std::string told = std::to_string(texts.size()) + " texts";
    for (const std::string& text : texts) {
        told += " " + std::to_string(text.size()) + " " + checksum(text);
    }
    return told;
}

// A call that gives a text.
template <typename Call>
Answer text(Attempt& attempt, Call&& call)
{
    std::string given = "none";
    Answer answer;
    answer.untouched = given;
    answer.status = attempt([&] { given = call(); });
    answer.told = answer.bytes = given;
    return answer;
}

Answer blocks(Attempt& attempt)
{
    const std::string marker = "=====vm node info=====\n";
    const std::string node = "head\n" + marker + "gpu_va = " + kValue + "\n" + marker +
                             "size = " + kValue + kValue + "\n";
    std::vector<std::string> given;
    Answer answer;
    answer.untouched = told_texts(given);
    answer.status = attempt([&] { given = split_VmNode_Info(node); });
    answer.told = answer.bytes = told_texts(given);
    return answer;
}

Answer value(Attempt& attempt)
{
    const std::string block = "device_pid = " + kValue + "\n";
    const std::string key = "device_pid";
    return text(attempt, [&] { return extractValue(block, key); });
}

Answer process(Attempt& attempt)
{
    const std::string line = "pid = " + kValue + "\n";
    return text(attempt, [&] { return find_Pid_number(line); });
}

Answer address(Attempt& attempt)
{
    const std::string line = "0:1: entry addr:" + kValue + ", buffer:0\n";
    const std::string key = "addr:";
    return text(attempt, [&] { return find_Addr_in_Table(line, key); });
}

Answer buffer(Attempt& attempt)
{
    const std::string line = "0:1: entry addr:0, buffer:" + kValue + " \n";
    const std::string key = "buffer:";
    return text(attempt, [&] { return find_Buffer_in_Table(line, key); });
}

Answer level(Attempt& attempt)
{
    const std::string line = kDigits + ":3: entry";
    return {.status = attempt([&] { return find_Level_in_Table(line); })};
}

Answer index(Attempt& attempt)
{
    const std::string line = "2:" + kDigits + ": entry";
    return {.status = attempt([&] { return find_Index_in_Table(line); })};
}

Answer sub_table_value(Attempt& attempt)
{
    const std::string line = "2:7 Snoop:" + kDigits + " Segment:1";
    const std::string key = "Snoop:";
    return {.status = attempt([&] { return find_value_in_subTable(line, key); })};
}

Answer file_name(Attempt& attempt)
{
    const std::string path = "/usr/bin/" + kValue;
    return text(attempt, [&] { return get_filename(path); });
}

// A table of each level, with one entry.
data_vectors& device()
{
    static data_vectors device = [] {
        data_vectors made{};
        const std::string table_address = kAddress.substr(2) + "000";
        for (auto [tables, entries] : {std::pair{&made.pt_level0, &made.st_level0},
                                       std::pair{&made.pt_level1, &made.st_level1},
                                       std::pair{&made.pt_level2, &made.st_level2}}) {
            table_address.copy(tables->emplace_back().Addr, sizeof vidmm_vm_pt::Addr - 1);
            vidmm_vm_pte_elt3k& entry = entries->emplace_back();
            entry.Index = 5;
            kValue.copy(entry.Addr, sizeof entry.Addr - 1);
            tables->front().PT_sub_entries = &entry;
        }
        return made;
    }();
    return device;
}

template <std::string (*find)(std::int32_t, const data_vectors*, const std::string&)>
Answer sub_table_address(Attempt& attempt)
{
    const data_vectors& tables = device();
    return text(attempt, [&] { return find(5, &tables, kAddress); });
}

Answer sub_table_node(Attempt& attempt)
{
    const data_vectors& tables = device();
    return filled<vidmm_vm_pte_elt3k>(
        attempt,
        [&](auto& entry) {
            entry = Find_SubTable_2_node(5, &tables, kAddress);
            return entry.found;
        },
        [](const vidmm_vm_pte_elt3k& entry) { return std::string{entry.Addr}; });
}

std::string told_room(const data_vectors& device)
{
    std::string told = "room for";
    for (const std::size_t entries :
         {device.pt_level0.capacity(), device.pt_level1.capacity(), device.pt_level2.capacity(),
          device.st_level0.capacity(), device.st_level1.capacity(), device.st_level2.capacity()}) {
        told += " " + std::to_string(entries);
    }
    return told;
}

Answer room_made(Attempt& attempt)
{
    data_vectors made{};
    Answer answer;
    answer.untouched = told_room(made);
    answer.status = attempt([&] { create_vector(made); });
    answer.told = answer.bytes = told_room(made);
    return answer;
}

constexpr std::array kEntryPoints{
    EntryPoint{"split_VmNode_Info", -1, nullptr, blocks, false},
    EntryPoint{"extractValue", -1, nullptr, value, false},
    EntryPoint{"find_Pid_number", -1, nullptr, process, false},
    EntryPoint{"find_Addr_in_Table", -1, nullptr, address, false},
    EntryPoint{"find_Buffer_in_Table", -1, nullptr, buffer, false},
    EntryPoint{"find_Level_in_Table", -1, nullptr, level, false},
    EntryPoint{"find_Index_in_Table", -1, nullptr, index, false},
    EntryPoint{"find_value_in_subTable", -1, nullptr, sub_table_value, false},
    EntryPoint{"get_filename", -1, nullptr, file_name, false},
    EntryPoint{"Find_SubTable_0_addr", -1, nullptr, sub_table_address<Find_SubTable_0_addr>, false},
    EntryPoint{"Find_SubTable_1_addr", -1, nullptr, sub_table_address<Find_SubTable_1_addr>, false},
    EntryPoint{"Find_SubTable_2_node", -1, nullptr, sub_table_node, false},
    EntryPoint{"create_vector", -1, nullptr, room_made, false},
};

}  // namespace

std::span<const EntryPoint> text_entry_points()
{
    return kEntryPoints;
}

}  // namespace nimba::test
