// SPDX-License-Identifier: MIT
// The text of a page-table dump, against building by numbers instead of links: every link must lead
// to an element of its record, and every count add up.
#include "fuzz/support/check.hpp"
#include "fuzz/support/input.hpp"
#include "fuzz/support/node_file.hpp"
#include "fuzz/support/outcome.hpp"
#include "fuzz/support/plain_page_tables.hpp"
#include "fuzz/support/target.hpp"
#include "nimba_mgmt_interface.h"
#include "pagetable/device_arrays.hpp"

#include <cstring>
#include <string>

namespace nimba::fuzz {
namespace {

constexpr std::size_t kMostBytes = 70'000;  // more than the reader's buffer

// The place of what a link leads to; kNowhere for none. Any other link is a finding.
template <typename Entry>
std::size_t place_of(const Entry* link, const std::vector<Entry>& entries)
{
    if (link == nullptr) {
        return kNowhere;
    }
    const auto first = reinterpret_cast<std::uintptr_t>(entries.data());
    const std::uintptr_t offset = reinterpret_cast<std::uintptr_t>(link) - first;
    check(offset < entries.size() * sizeof(Entry) && offset % sizeof(Entry) == 0,
          "a link leads to an element of its record");
    return offset / sizeof(Entry);
}

// A link that can lead to one level alone.
template <typename Entry, typename Levels>
std::size_t place_in_level(const Entry* link, const data_vectors& device, const Levels& levels,
                           std::size_t level)
{
    check(link == nullptr || level < levels.size(), "a link leads to a level that there is");
    return link == nullptr ? kNowhere : place_of(link, device.*levels[level].entries);
}

void check_text(const char* field, const std::string& expected)
{
    check(std::strlen(field) < 48 && expected == field, "a text is that of its line");
}

void check_page_table(const data_vectors& device, std::size_t level, const vidmm_vm_pt& entry,
                      const PlainPageTable& expected)
{
    check_text(entry.Buffer, expected.buffer);
    check_text(entry.Addr, expected.address);
    check(entry.PT_Level == static_cast<int32_t>(level) && entry.PT_index == expected.index,
          "a page-table entry has the numbers of its line");
    const auto in = [&](const vidmm_vm_pt* link, std::size_t other) {
        return place_in_level(link, device, kPageTables, other);
    };
    check(in(entry.entries, level + 1) == expected.child &&
              in(entry.parent, level - 1) == expected.parent &&
              in(entry.next, level) == expected.next && in(entry.pre, level) == expected.previous,
          "a page-table entry is linked by the order of the lines");
    check(place_in_level(entry.PT_sub_entries, device, kSubTables, level) == expected.sub_table,
          "a page-table entry owns the sub-table behind it");
}

void check_sub_table(const data_vectors& device, std::size_t level, const vidmm_vm_pte_elt3k& entry,
                     const PlainSubTable& expected)
{
    check_text(entry.Addr, expected.address);
    check(entry.ST_Level == static_cast<int32_t>(level) && entry.Index == expected.index &&
              entry.Snoop == expected.snoop && entry.Segment == expected.segment &&
              entry.LargePage == expected.large_page && entry.found == 0,
          "a sub-table entry has the numbers of its line");
    const auto& level_entries = device.*kSubTables[level].entries;
    check(place_of(entry.next, level_entries) == expected.next &&
              place_of(entry.pre, level_entries) == expected.previous &&
              place_in_level(entry.parent, device, kPageTables, level) == expected.parent,
          "a sub-table entry is linked by the order of the lines");
    check(
        entry.parent_level == expected.parent_level && entry.parent_index == expected.parent_index,
        "a sub-table entry names its owner");
}

// Returns the number of entries.
std::size_t check_tree(const data_vectors& device, const PlainTree& expected)
{
    std::size_t count = 0;
    for (std::size_t level = 0; level < kPlainLevels; ++level) {
        const auto& tables = device.*kPageTables[level].entries;
        const auto& sub_tables = device.*kSubTables[level].entries;
        check(tables.size() == expected.page_tables[level].size() &&
                  sub_tables.size() == expected.sub_tables[level].size(),
              "each level has an entry for each of its lines");
        for (std::size_t index = 0; index < tables.size(); ++index) {
            check_page_table(device, level, tables[index], expected.page_tables[level][index]);
        }
        for (std::size_t index = 0; index < sub_tables.size(); ++index) {
            check_sub_table(device, level, sub_tables[index], expected.sub_tables[level][index]);
        }
        count += tables.size() + sub_tables.size();
    }
    return count;
}

// Finds each entry of the first table of that address again, by the page's number.
void check_lookup(const data_vectors& device)
{
    for (const vidmm_vm_pt& table : device.pt_level2) {
        const std::string address{table.Addr};
        if (table.PT_sub_entries == nullptr || !address.ends_with("000")) {
            continue;
        }
        const std::string page = "0x" + address.substr(0, address.size() - 3);
        const int32_t index = table.PT_sub_entries->Index;
        const vidmm_vm_pte_elt3k found = Find_SubTable_2_node(index, &device, page);
        check(found.found == 0 || found.Index == index, "a lookup finds the index or nothing");
        return;
    }
}

Outcome check_flat_record(const _PAGETABLE_DATA& record, const std::string& address)
{
    int32_t expected = 0;
    const Outcome outcome = to_int(address, 16, expected);
    check(outcome != Outcome::kDone || record.addr == expected,
          "a flat record has the number of its address");
    return outcome;
}

// The export of copies, whose links lead nowhere.
void check_export(const data_vectors& device, const PlainTree& expected, std::size_t count)
{
    Pagetable_List.assign(1, device);
    std::strcpy(Pagetable_List[0].pid, "7");
    Get_Local_Data_Status = 0;
    std::vector<_PAGETABLE_DATA> records(count);
    const Outcome outcome = outcome_of([&] { get_pagetable_data(records.data(), nullptr); });
    Pagetable_List.clear();
    Outcome due = Outcome::kDone;
    std::size_t next = 0;
    const auto check_level = [&](const auto& entries) {
        for (const auto& entry : entries) {
            due = due == Outcome::kDone ? check_flat_record(records[next++], entry.address) : due;
        }
    };
    for (const auto& level : expected.page_tables) {
        check_level(level);
    }
    for (const auto& level : expected.sub_tables) {
        check_level(level);
    }
    check(outcome == due, "an export ends as its addresses do");
    check(due != Outcome::kDone || next == count, "an export has every entry");
}

void check_dump(data_vectors& device, const std::string& text)
{
    static NodeFile file;
    file.set(text);
    PlainTree expected;
    const Outcome due = build_plainly(text, expected);
    const Outcome outcome = outcome_of([&] {
        check(get_pagetable_info(&device, file.path().c_str()) == 0,
              "a dump that is there is read");
    });
    check(outcome == due, "a dump ends as its lines do");
    generate_DigitalIndex(device);
    name_owners(expected);
    const std::size_t count = check_tree(device, expected);
    check_lookup(device);
    check_export(device, expected, count);
}

}  // namespace

void try_input(std::string_view input)
{
    static data_vectors usual;
    const uint8_t control = take_byte(input);
    const std::string text = repeated(input, control, kMostBytes);
    if ((control & 4U) != 0) {
        data_vectors growing{};
        check_dump(growing, text);
        return;
    }
    create_vector(usual);
    clean_vector(&usual);
    check_dump(usual, text);
}

}  // namespace nimba::fuzz
