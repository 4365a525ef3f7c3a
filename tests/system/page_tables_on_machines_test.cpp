// SPDX-License-Identifier: MIT
// The page tables of machines, by the geometry of their drivers' address spaces: an entry of a
// page table of level 0, 1 or 2 spans 512 GiB, 1 GiB or 2 MiB, and is numbered over the whole
// space.
#include "machine_fixture.hpp"
#include "support/captured_stdout.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <ostream>
#include <set>
#include <utility>

inline bool operator==(const _PAGETABLE_DATA& a, const _PAGETABLE_DATA& b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

inline void PrintTo(const _PAGETABLE_DATA& record, std::ostream* out)
{
    *out << "{" << record.pid << ", " << std::hex << record.addr << std::dec << ", " << record.Snoop
         << ", " << record.Segment << ", " << record.LargePage << ", " << record.level << ":"
         << record.index << " of " << record.parent_level << ":" << record.parent_index << ", "
         << record.kind << "}";
}

namespace nimba::test {
namespace {

using PageTables = std::vector<_PAGETABLE_DATA>;
// Process id, handle, size and address.
using Allocation = std::array<std::int64_t, 4>;
using Allocations = std::vector<Allocation>;

constexpr std::int64_t kViewer = 4100001;
constexpr std::int64_t kMaze = 4100002;

constexpr std::uint64_t kSmallPage = 4096;

class PageTableTest : public MachineTest {
  protected:
    // Reads the driver; fills status_, output_, page_tables_ and, by handle, allocations_.
    void read()
    {
        auto& get_page_tables = library_.symbol<decltype(get_pagetable_data)>("get_pagetable_data");
        auto& get_allocations =
            library_.symbol<decltype(get_allocation_data)>("get_allocation_data");
        std::uint32_t count = 0;
        std::uint32_t allocation_count = 0;
        output_ = stdout_of([&] { get_page_tables(nullptr, &count); });
        status_ = library_.symbol<std::int32_t>("Get_Local_Data_Status");
        if (status_ != 0) {
            return;
        }
        page_tables_.resize(count);
        get_page_tables(page_tables_.data(), nullptr);
        get_allocations(nullptr, &allocation_count);
        std::vector<_ALLOCATION_DATA> allocations(allocation_count);
        get_allocations(allocations.data(), nullptr);
        allocations_.clear();
        for (const _ALLOCATION_DATA& data : allocations) {
            allocations_.push_back(
                {data.device_pid, data.allocation_handle, data.size, data.gpu_va});
        }
        std::ranges::sort(allocations_);
    }

    // The records of a process with this kind and level.
    PageTables of(std::int64_t pid, std::int32_t kind, std::int32_t level) const
    {
        PageTables found;
        std::ranges::copy_if(page_tables_, std::back_inserter(found), [&](const auto& record) {
            return record.pid == pid && record.kind == kind && record.level == level;
        });
        return found;
    }
    // The indices of a process's page-table entries of this level.
    std::set<std::int64_t> tables(std::int64_t pid, std::int32_t level) const
    {
        std::set<std::int64_t> indices;
        for (const _PAGETABLE_DATA& record : of(pid, PAGETABLE_KIND_PAGE_TABLE, level)) {
            indices.insert(record.index);
        }
        return indices;
    }
    // Expects that every table but those of level 0, and every sub-table entry, has its owner.
    void expect_a_tree(std::int64_t pid) const
    {
        const std::array<std::set<std::int64_t>, 3> levels{tables(pid, 0), tables(pid, 1),
                                                           tables(pid, 2)};
        for (const std::size_t level : {1U, 2U}) {
            for (const std::int64_t index : levels[level]) {
                EXPECT_TRUE(levels[level - 1].contains(index / 512)) << level << ":" << index;
            }
        }
        for (const std::int32_t level : {0, 1, 2}) {
            for (const _PAGETABLE_DATA& record : of(pid, PAGETABLE_KIND_SUB_TABLE, level)) {
                ASSERT_EQ(record.parent_level, level);
                ASSERT_TRUE(levels[static_cast<std::size_t>(level)].contains(record.parent_index));
            }
        }
    }
    // The addresses of all 4 KiB that a process has mapped by pages of 2 MiB, 64 KiB and 4 KiB.
    std::set<std::uint64_t> mapped(std::int64_t pid) const
    {
        std::set<std::uint64_t> addresses;
        const auto map = [&](const _PAGETABLE_DATA& record, unsigned table_shift,
                             unsigned page_shift) {
            const std::uint64_t begin =
                (static_cast<std::uint64_t>(record.parent_index) << table_shift) +
                (static_cast<std::uint64_t>(record.index) << page_shift);
            const std::uint64_t end = begin + (std::uint64_t{1} << page_shift);
            for (std::uint64_t address = begin; address < end; address += kSmallPage) {
                addresses.insert(address);
            }
        };
        for (const _PAGETABLE_DATA& record : of(pid, PAGETABLE_KIND_SUB_TABLE, 1)) {
            map(record, 30, 21);
        }
        for (const _PAGETABLE_DATA& record : of(pid, PAGETABLE_KIND_SUB_TABLE, 2)) {
            map(record, 21, record.LargePage != 0 ? 16 : 12);
        }
        return addresses;
    }
    // The names of the devices' processes.
    std::set<std::string> names() const
    {
        std::set<std::string> found;
        for (const data_vectors& device :
             library_.symbol<std::vector<data_vectors>>("Pagetable_List")) {
            found.insert(device.app_name);
        }
        return found;
    }

    std::int32_t status_ = 42;
    PageTables page_tables_;
    Allocations allocations_;
};

using DefaultPageTables = PageTableTest;

TEST_F(DefaultPageTables, AreThoseOfTheViewer)
{
    read();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(page_tables_, (PageTables{{kViewer, 0x10000000, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0},
                                        {kViewer, 0x10001000, 0, 0, 0, 0, 1, 4, 0, 0, 1, 0},
                                        {kViewer, 0x10002000, 0, 0, 0, 0, 2, 2050, 0, 0, 1, 0},
                                        {kViewer, 0x10003000, 0, 0, 0, 0, 2, 2051, 0, 0, 1, 0},
                                        {kViewer, 0x1000000, 0, 0, 1, 0, 1, 0, 1, 4, -1, 0},
                                        {kViewer, 0x1200000, 0, 0, 1, 0, 1, 1, 1, 4, -1, 0},
                                        {kViewer, 0x1400000, 0, 0, 1, 0, 2, 0, 2, 2050, -1, 0},
                                        {kViewer, 0x1410000, 0, 0, 1, 0, 2, 1, 2, 2050, -1, 0},
                                        {kViewer, 0x1420000, 0, 0, 1, 0, 2, 2, 2, 2050, -1, 0},
                                        {kViewer, 0x1430000, 0, 0, 1, 0, 2, 3, 2, 2050, -1, 0},
                                        {kViewer, 0x1440000, 0, 1, 1, 0, 2, 4, 2, 2050, -1, 0},
                                        {kViewer, 0x1600000, 1, 1, 0, 0, 2, 0, 2, 2051, -1, 0},
                                        {kViewer, 0x1601000, 1, 1, 0, 0, 2, 1, 2, 2051, -1, 0},
                                        {kViewer, 0x1602000, 1, 1, 0, 0, 2, 2, 2, 2051, -1, 0},
                                        {kViewer, 0x1603000, 1, 1, 0, 0, 2, 3, 2, 2051, -1, 0},
                                        {kViewer, 0x1604000, 1, 0, 0, 0, 2, 4, 2, 2051, -1, 0}}));
    EXPECT_EQ(allocations_, (Allocations{{kViewer, 1, 0x400000, 0x100000000},
                                         {kViewer, 2, 0x40000, 0x100400000},
                                         {kViewer, 3, 0x10000, 0x100440000},
                                         {kViewer, 4, 0x4000, 0x100600000},
                                         {kViewer, 5, 0x1000, 0x100604000}}));
}

TEST_F(DefaultPageTables, AreTheSameWhicheverAdapterIsCurrent)
{
    read();
    ASSERT_EQ(status_, 0);
    const PageTables before = std::exchange(page_tables_, {});
    discover();
    init(0);
    read();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(page_tables_, before);
    exit(0);
}

using TwoAddressSpaces = PageTableTest;

TEST_F(TwoAddressSpaces, AreReadWithoutAnOpenFileLeft)
{
    const OpenFiles files = open_files();
    read();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(open_files(), files);
}

TEST_F(TwoAddressSpaces, AreTrees)
{
    read();
    expect_a_tree(kViewer);
    expect_a_tree(kMaze);
    EXPECT_FALSE(tables(kViewer, 0).empty());
}

TEST_F(TwoAddressSpaces, MapEveryPageOfTheViewersAllocationsAndNoOther)
{
    read();
    EXPECT_EQ(allocations_.size(), 36U);
    std::set<std::uint64_t> pages;
    for (const auto& [pid, handle, size, address] : allocations_) {
        EXPECT_EQ(pid, kViewer) << handle;
        for (std::int64_t offset = 0; offset < size; offset += 4096) {
            pages.insert(static_cast<std::uint64_t>(address + offset));
        }
    }
    EXPECT_EQ(pages.size(), 7347U);
    EXPECT_EQ(mapped(kViewer), pages);
}

TEST_F(TwoAddressSpaces, HaveTheTablesOfTheGame)
{
    read();
    EXPECT_EQ(tables(kMaze, 0).size(), 4U);
    EXPECT_EQ(tables(kMaze, 1).size(), 40U);
    EXPECT_EQ(tables(kMaze, 2).size(), 400U);
    EXPECT_TRUE(of(kMaze, PAGETABLE_KIND_SUB_TABLE, 0).empty());
    EXPECT_TRUE(of(kMaze, PAGETABLE_KIND_SUB_TABLE, 1).empty());
    const PageTables pages = of(kMaze, PAGETABLE_KIND_SUB_TABLE, 2);
    EXPECT_EQ(pages.size(), 20000U);
    EXPECT_EQ(std::ranges::count(pages, 1, &_PAGETABLE_DATA::Snoop), 2000);
    // A quarter of the tables, each with the 32 pages of 64 KiB that it spans.
    EXPECT_EQ(std::ranges::count(pages, 1, &_PAGETABLE_DATA::LargePage), 3200);
    for (const int segment : {0, 1, 2}) {
        EXPECT_GT(std::ranges::count(pages, segment, &_PAGETABLE_DATA::Segment), 0) << segment;
    }
    EXPECT_EQ(*mapped(kMaze).begin(), 0x400000000000U);
}

TEST_F(TwoAddressSpaces, HaveTheNamesOfTheirProcesses)
{
    read();
    EXPECT_EQ(names(), (std::set<std::string>{"maze", "viewer"}));
}

using NoPageTables = PageTableTest;

TEST_F(NoPageTables, AreToldByTheStatus)
{
    const OpenFiles files = open_files();
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, "\nThe function is being tested on this Chip......\n");
    EXPECT_EQ(open_files(), files);
}

}  // namespace
}  // namespace nimba::test
