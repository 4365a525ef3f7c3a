// SPDX-License-Identifier: MIT
// The text of a page-table dump, against building by numbers instead of links: every link must lead
// to an element of its record, every lookup find what a search finds, and every count and every
// record of the export add up, be it of what was read here or of what the library collects itself.
// A first byte with the bits kCollected alone, or beside them kNamed, lets it collect; with kNamed
// the device's name stands in a line before the text.
#include "fuzz/support/check.hpp"
#include "fuzz/support/entry_names.hpp"
#include "fuzz/support/input.hpp"
#include "fuzz/support/machine_paths.hpp"
#include "fuzz/support/node_file.hpp"
#include "fuzz/support/outcome.hpp"
#include "fuzz/support/plain_page_tables.hpp"
#include "fuzz/support/target.hpp"
#include "nimba_mgmt_interface.h"
#include "pagetable/device_arrays.hpp"
#include "support/temp_directory.hpp"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <string>

namespace nimba::fuzz {
namespace {

constexpr unsigned kCollected = 0x18;
constexpr unsigned kNamed = 0x80;
constexpr unsigned kForm = 0x78;
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

// The first entry with that index below the first table with that address; null for none.
const PlainSubTable* found_plainly(const PlainTree& tree, std::size_t level,
                                   const std::string& address, int32_t index)
{
    const auto& tables = tree.page_tables[level];
    const auto& entries = tree.sub_tables[level];
    const auto table = std::ranges::find(tables, address, &PlainPageTable::address);
    std::size_t place = table == tables.end() ? kNowhere : table->sub_table;
    while (place != kNowhere && entries[place].index != index) {
        place = entries[place].next;
    }
    return place == kNowhere ? nullptr : &entries[place];
}

// Looks an index up in a table by the number of its page.
void check_lookup(const data_vectors& device, const PlainTree& expected, std::size_t level,
                  const std::string& page, int32_t index)
{
    const PlainSubTable* const due = found_plainly(expected, level, page + "000", index);
    const std::string number = "0x" + page;
    if (level < 2) {
        const std::string address = level == 0 ? Find_SubTable_0_addr(index, &device, number)
                                               : Find_SubTable_1_addr(index, &device, number);
        check(address == (due == nullptr ? "" : due->address),
              "a lookup gives the address of the entry, or none");
        return;
    }
    const vidmm_vm_pte_elt3k found = Find_SubTable_2_node(index, &device, number);
    check(due != nullptr ||
              (found.found == 0 && found.Index == 0 && found.ST_Level == 0 && found.Snoop == 0 &&
               found.Segment == 0 && found.LargePage == 0 && found.Addr[0] == '\0' &&
               found.parent_level == 0 && found.parent_index == 0 && found.next == nullptr &&
               found.pre == nullptr && found.parent == nullptr),
          "a lookup without an entry gives none");
    check(due == nullptr ||
              (found.found == 1 && found.Index == index && found.Addr == due->address &&
               found.Snoop == due->snoop && found.Segment == due->segment &&
               found.LargePage == due->large_page && found.parent_index == due->parent_index),
          "a lookup gives the entry");
}

// Finds entries of the first tables of each level, and one that need not be there.
void check_lookups(const data_vectors& device, const PlainTree& expected)
{
    constexpr std::size_t kTables = 8;
    constexpr std::size_t kEntries = 4;
    for (std::size_t level = 0; level < kPlainLevels; ++level) {
        const auto& entries = expected.sub_tables[level];
        std::size_t tables = 0;
        for (const PlainPageTable& table : expected.page_tables[level]) {
            if (!table.address.ends_with("000") || ++tables > kTables) {
                continue;
            }
            const std::string page = table.address.substr(0, table.address.size() - 3);
            int32_t index = 0;
            std::size_t place = table.sub_table;
            for (std::size_t each = 0; place != kNowhere && each < kEntries; ++each) {
                index = entries[place].index;
                check_lookup(device, expected, level, page, index);
                place = entries[place].next;
            }
            check_lookup(device, expected, level, page, index / 2 + 1);
        }
        check_lookup(device, expected, level, "none", 0);
    }
}

// What a flat record must be, but for its process and its address.
_PAGETABLE_DATA flat(const PlainPageTable& entry, std::size_t level)
{
    _PAGETABLE_DATA data{};
    data.level = static_cast<int32_t>(level);
    data.index = entry.index;
    data.kind = PAGETABLE_KIND_PAGE_TABLE;
    return data;
}

_PAGETABLE_DATA flat(const PlainSubTable& entry, std::size_t level)
{
    _PAGETABLE_DATA data{};
    data.Snoop = entry.snoop;
    data.Segment = entry.segment;
    data.LargePage = static_cast<uint16_t>(entry.large_page);
    data.level = static_cast<int32_t>(level);
    data.index = entry.index;
    data.parent_level = entry.parent_level;
    data.parent_index = entry.parent_index;
    data.kind = PAGETABLE_KIND_SUB_TABLE;
    return data;
}

// Compares records from the first one on until an address is no number.
class FlatRecords final {
  public:
    explicit FlatRecords(const std::vector<_PAGETABLE_DATA>& records) : records_{records} {}

    template <typename Entry>
    void check_level(const std::vector<Entry>& entries, std::size_t level)
    {
        for (std::size_t each = 0; each < entries.size() && due_ == Outcome::kDone; ++each) {
            _PAGETABLE_DATA data = flat(entries[each], level);
            int32_t address = 0;
            due_ = to_int(entries[each].address, 16, address);
            data.pid = 7;
            data.addr = address;
            check(due_ != Outcome::kDone ||
                      std::memcmp(&records_.at(next_++), &data, sizeof data) == 0,
                  "a flat record has what its entry has, and zeros");
        }
    }

    // How the export ends.
    [[nodiscard]] Outcome due() const { return due_; }
    [[nodiscard]] std::size_t compared() const { return next_; }

  private:
    const std::vector<_PAGETABLE_DATA>& records_;
    std::size_t next_ = 0;
    Outcome due_ = Outcome::kDone;
};

// The export of copies, whose links lead nowhere.
void check_records(const PlainTree& expected, std::size_t count)
{
    // One more than there are: a buffer must not be null.
    _PAGETABLE_DATA pattern;
    std::memset(&pattern, 0xA5, sizeof pattern);
    std::vector<_PAGETABLE_DATA> records(count + 1, pattern);
    const Outcome outcome = outcome_of([&] { get_pagetable_data(records.data(), nullptr); });
    FlatRecords flat_records{records};
    for (std::size_t level = 0; level < kPlainLevels; ++level) {
        flat_records.check_level(expected.page_tables[level], level);
    }
    for (std::size_t level = 0; level < kPlainLevels; ++level) {
        flat_records.check_level(expected.sub_tables[level], level);
    }
    check(outcome == flat_records.due(), "an export ends as its addresses do");
    check(std::memcmp(&records.back(), &pattern, sizeof pattern) == 0,
          "an export has no more than every entry");
    check(outcome != Outcome::kDone || flat_records.compared() == count,
          "an export has every entry");
}

void check_export(const data_vectors& device, const PlainTree& expected, std::size_t count)
{
    Pagetable_List.assign(1, device);
    std::strcpy(Pagetable_List[0].pid, "7");
    Get_Local_Data_Status = 0;
    check_records(expected, count);
    Pagetable_List.clear();
}

// A driver with one device, of the process 7, of any name.
class OneDevice final {
  public:
    OneDevice()
    {
        const std::filesystem::path device = devices_ / name_;
        std::filesystem::create_directories(device);
        std::filesystem::create_directories(directory_.path() / "allocations");
        std::filesystem::create_symlink(info_.path(), device / "info");
        std::filesystem::create_symlink(dump_.path(), device / "vm_info");
        info_.set("pid = 7\n");
        process_.set("viewer\n");
        redirect("/sys/kernel/debug/dri/0/qv", directory_.path().string());
        redirect_commands(process_.path());
    }

    void show(const std::string& name, std::string_view dump)
    {
        std::filesystem::rename(devices_ / name_, devices_ / name);
        name_ = name;
        dump_.set(dump);
    }

  private:
    test::TempDirectory directory_;
    std::filesystem::path devices_ = directory_.path() / "devices";
    std::string name_ = "1";
    NodeFile info_;
    NodeFile dump_;
    NodeFile process_;
};

// The collection from a driver whose device is none of a process: nothing is read of it.
void check_system_device(uint32_t count, Outcome outcome)
{
    check(outcome == Outcome::kDone && Get_Local_Data_Status == 0 && count == 0,
          "a device of the driver's own is passed over");
}

// The collection from the driver, which tells how many records there are to export.
void check_collection(const std::string& name, const std::string& text, const PlainTree& expected,
                      Outcome due, std::size_t entries)
{
    constexpr uint32_t kUntouched = 0xA5A5A5A5;
    static OneDevice driver;
    driver.show(name, text);
    uint32_t count = kUntouched;
    const Outcome outcome = outcome_of([&] { get_pagetable_data(nullptr, &count); });
    if (name == "00000000" || name == "02000000") {
        check_system_device(count, outcome);
        return;
    }
    check(outcome == due, "a collection ends as its dump does");
    check(Get_Local_Data_Status == (due == Outcome::kDone ? 0 : -1),
          "a collection is kept when it is whole");
    check(count == (due == Outcome::kDone ? entries : kUntouched),
          "a collection counts every entry");
    if (due == Outcome::kDone) {
        check_records(expected, entries);
    }
}

// `collected`: the name of the device that the text is collected from, too; null: it is not.
void check_dump(data_vectors& device, const std::string& text, const std::string* collected)
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
    check_lookups(device, expected);
    check_export(device, expected, count);
    if (collected != nullptr) {
        check_collection(*collected, text, expected, due, count);
    }
}

}  // namespace

void try_input(std::string_view input)
{
    static data_vectors usual;
    const uint8_t control = take_byte(input);
    // A collection makes room for as much as a driver usually shows, which takes its time.
    const bool is_collected = (control & kForm) == kCollected;
    const std::string name =
        is_collected && (control & kNamed) != 0 ? take_names({&input, 1}).front() : "1";
    const std::string* const collected = is_collected ? &name : nullptr;
    const std::string text = repeated(input, control, kMostBytes);
    if ((control & 4U) != 0) {
        data_vectors growing{};
        check_dump(growing, text, collected);
        return;
    }
    create_vector(usual);
    clean_vector(&usual);
    check_dump(usual, text, collected);
}

}  // namespace nimba::fuzz
