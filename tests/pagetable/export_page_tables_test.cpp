// SPDX-License-Identifier: MIT
// The page-table records that a host gets.
#include "export_fixture.hpp"

#include <stdexcept>

namespace nimba::test {
namespace {

using Records = std::vector<_PAGETABLE_DATA>;

constexpr _PAGETABLE_DATA page_table(std::int64_t pid, std::int64_t addr, std::int32_t level,
                                     std::int32_t index)
{
    return {pid, addr, 0, 0, 0, 0, level, index, 0, 0, 1, 0};
}

class PageTableExport : public ExportTest {
  protected:
    // The driver has one device, of process 101, with this dump.
    void show(const std::string& dump)
    {
        driver_.forget_devices();
        driver_.add_device("1", "pid = 101\n", dump);
        collect_all();
    }
    // The address that a page-table entry and a sub-table entry with this text have.
    std::int64_t address(const std::string& text)
    {
        show("0:0: entry addr:" + text +
             ", buffer:b\n0:0 Snoop:0 Segment:0 LargePage:0 Addr:" + text + "\n");
        const Records records = page_tables(2);
        EXPECT_EQ(records[0].addr, records[1].addr) << text;
        return records[1].addr;
    }
};

TEST_F(PageTableExport, IsOrderedByDeviceThenKindThenLevelThenDump)
{
    driver_.add_device("b", "pid = 102\n",
                       "0:2: entry addr:10, buffer:a\n"
                       "1:3: entry addr:20, buffer:b\n"
                       "2:4: entry addr:30, buffer:c\n"
                       "2:17 Snoop:1 Segment:2 LargePage:3 Addr:40\n"
                       "2:16 Snoop:0 Segment:4 LargePage:0 Addr:50\n"
                       "1:5: entry addr:60, buffer:d\n"
                       "1:18 Snoop:1 Segment:5 LargePage:1 Addr:70\n"
                       "2:1: entry addr:80, buffer:e\n"
                       "0:9: entry addr:90, buffer:f\n"
                       "0:19 Snoop:0 Segment:6 LargePage:1 Addr:a0\n");
    driver_.add_device("a", "pid = 101\n", "0:7: entry addr:b0, buffer:g\n");
    collect_all();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(count_, 11U);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(page_tables(12), (Records{page_table(102, 0x10, 0, 2),
                                        page_table(102, 0x90, 0, 9),
                                        page_table(102, 0x20, 1, 3),
                                        page_table(102, 0x60, 1, 5),
                                        page_table(102, 0x30, 2, 4),
                                        page_table(102, 0x80, 2, 1),
                                        {102, 0xa0, 0, 6, 1, 0, 0, 19, 0, 9, -1, 0},
                                        {102, 0x70, 1, 5, 1, 0, 1, 18, 1, 5, -1, 0},
                                        {102, 0x40, 1, 2, 3, 0, 2, 17, 2, 4, -1, 0},
                                        {102, 0x50, 0, 4, 0, 0, 2, 16, 2, 4, -1, 0},
                                        page_table(101, 0xb0, 0, 7),
                                        untouched<_PAGETABLE_DATA>()}));
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, "");
}

TEST_F(PageTableExport, OfNoDevicesIsEmpty)
{
    collect_all();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(count_, 0U);
    EXPECT_EQ(page_tables(1), Records{untouched<_PAGETABLE_DATA>()});
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, "");
}

TEST_F(PageTableExport, LeavesOutDevicesThatAreNotKept)
{
    add("1", "0");
    add("2", "102");
    driver_.list_device("00000000");
    collect_all();
    EXPECT_EQ(count_, 1U);
    EXPECT_EQ(page_tables(1), (Records{page_table(102, 0x1000, 0, 7)}));
}

TEST_F(PageTableExport, DoesNotReadTheDriver)
{
    show(kOneEntry);
    break_driver();
    ps_.take_calls();
    EXPECT_EQ(page_tables(1), (Records{page_table(101, 0x1000, 0, 7)}));
    EXPECT_EQ(page_tables(1), (Records{page_table(101, 0x1000, 0, 7)}));
    EXPECT_EQ(ps_.take_calls(), "");
    EXPECT_EQ(output_, "");
}

TEST_F(PageTableExport, WithABufferDoesNotTouchTheCount)
{
    show(kOneEntry);
    _PAGETABLE_DATA record;
    count_ = 0;
    run([&] { return get_pagetable_data(&record, &count_); });
    EXPECT_EQ(count_, 0U);
    EXPECT_EQ(record, page_table(101, 0x1000, 0, 7));
}

TEST_F(PageTableExport, ReplacesWhatTheReadingBeforeItKept)
{
    show(kOneEntry);
    EXPECT_EQ(count_, 1U);
    show("1:1: entry\n0:8: entry addr:2000, buffer:a\n1:9: entry addr:3000, buffer:b\n");
    EXPECT_EQ(count_, 2U);
    EXPECT_EQ(page_tables(3), (Records{page_table(101, 0x2000, 0, 8), page_table(101, 0x3000, 1, 9),
                                       untouched<_PAGETABLE_DATA>()}));
    EXPECT_EQ(Pagetable_List.size(), 1U);
}

TEST_F(PageTableExport, HasADeviceOnceMoreForAFailedPass)
{
    add("1", "101");
    driver_.list_device("2");
    const DuringPauses restoring{[&] { driver_.forget_devices(), add("2", "102"); }};
    collect_all();
    EXPECT_EQ(count_, 2U);
    EXPECT_EQ(page_tables(2),
              (Records{page_table(101, 0x1000, 0, 7), page_table(102, 0x1000, 0, 7)}));
}

TEST_F(PageTableExport, ConvertsProcessIds)
{
    const std::vector<std::pair<std::string, std::int64_t>> pids{{"00042", 42},
                                                                 {"-5", -5},
                                                                 {" 7", 7},
                                                                 {"+8", 8},
                                                                 {"12abc", 12},
                                                                 {"3 4", 3},
                                                                 {"2147483647", 2147483647},
                                                                 {"0x10", 0},
                                                                 {"\t\t9\t", 9},
                                                                 {"-2147483648", -2147483648LL}};
    for (const auto& [text, pid] : pids) {
        driver_.forget_devices();
        add("1", text);
        collect_all();
        EXPECT_EQ(page_tables(1), (Records{page_table(pid, 0x1000, 0, 7)})) << text;
    }
}

TEST_F(PageTableExport, RefusesProcessIdsThatAreNoNumbers)
{
    for (const char* text : {"", "x", "-", "   ", "viewer 7"}) {
        driver_.forget_devices();
        add("1", text);
        collect_all();
        EXPECT_EQ(count_, 1U) << text;
        EXPECT_THROW(page_tables(1), std::invalid_argument) << text;
        EXPECT_EQ(Get_Local_Data_Status, 0) << text;
    }
    driver_.forget_devices();
    driver_.add_device("1", "handle = 1\n", kOneEntry);
    collect_all();
    EXPECT_EQ(count_, 1U);
    EXPECT_THROW(page_tables(1), std::invalid_argument);
}

TEST_F(PageTableExport, RefusesProcessIdsBeyond32Bits)
{
    for (const char* text : {"2147483648", "-2147483649", "99999999999999999999"}) {
        driver_.forget_devices();
        add("1", text);
        collect_all();
        EXPECT_THROW(page_tables(1), std::out_of_range) << text;
    }
}

TEST_F(PageTableExport, RefusesAProcessIdOfADeviceWithoutEntries)
{
    driver_.add_device("1", "pid = x\n", "");
    collect_all();
    EXPECT_EQ(count_, 0U);
    EXPECT_THROW(page_tables(1), std::invalid_argument);
}

TEST_F(PageTableExport, ConvertsAddresses)
{
    EXPECT_EQ(address("0"), 0);
    EXPECT_EQ(address("7fffffff"), 2147483647);
    EXPECT_EQ(address("7FFFFFFF"), 2147483647);
    EXPECT_EQ(address("0x10"), 16);
    EXPECT_EQ(address("0X1f"), 31);
    EXPECT_EQ(address("  10"), 16);
    EXPECT_EQ(address("00000000000000001"), 1);
    EXPECT_EQ(address("10zz"), 16);
    EXPECT_EQ(address("-1"), -1);
    EXPECT_EQ(address("-80000000"), -2147483648LL);
    EXPECT_EQ(address("+a"), 10);
}

TEST_F(PageTableExport, RefusesAddressesThatAreNoNumbers)
{
    for (const char* text : {"", "zz", "-", "   ", "x10"}) {
        EXPECT_THROW(address(text), std::invalid_argument) << text;
        EXPECT_EQ(count_, 2U) << text;
    }
}

TEST_F(PageTableExport, RefusesAddressesBeyond32Bits)
{
    for (const char* text :
         {"80000000", "0x80000000", "ffffffff", "-80000001", "ffffffffffffffffffffffffffffffff"}) {
        EXPECT_THROW(address(text), std::out_of_range) << text;
        EXPECT_EQ(count_, 2U) << text;
    }
}

TEST_F(PageTableExport, RefusesTheAddressOfASubTableEntryAlone)
{
    show("0:1: entry addr:10, buffer:a\n0:2 Snoop:0 Segment:0 LargePage:0 Addr:80000000\n");
    EXPECT_THROW(page_tables(2), std::out_of_range);
    show("0:1: entry addr:10, buffer:a\n0:2 Snoop:0 Segment:0 LargePage:0\n");
    EXPECT_THROW(page_tables(2), std::invalid_argument);
}

TEST_F(PageTableExport, WritesTheRecordsBeforeARefusedOne)
{
    driver_.add_device("1", "pid = 101\n", kOneEntry);
    driver_.add_device("2", "pid = 102\n",
                       "0:8: entry addr:2000, buffer:a\n0:9: entry addr:80000000, buffer:b\n"
                       "0:10: entry addr:3000, buffer:c\n");
    collect_all();
    EXPECT_EQ(count_, 4U);
    Records records(4, untouched<_PAGETABLE_DATA>());
    EXPECT_THROW(run([&] { return get_pagetable_data(records.data(), &count_); }),
                 std::out_of_range);
    EXPECT_EQ(records[0], page_table(101, 0x1000, 0, 7));
    EXPECT_EQ(records[1], page_table(102, 0x2000, 0, 8));
    EXPECT_EQ(records[3], untouched<_PAGETABLE_DATA>());
    EXPECT_EQ(Get_Local_Data_Status, 0);
}

TEST_F(PageTableExport, WritesTheRecordsBeforeARefusedProcessId)
{
    add("1", "101");
    add("2", "x");
    add("3", "103");
    collect_all();
    EXPECT_EQ(count_, 3U);
    Records records(3, untouched<_PAGETABLE_DATA>());
    EXPECT_THROW(run([&] { return get_pagetable_data(records.data(), &count_); }),
                 std::invalid_argument);
    EXPECT_EQ(records, (Records{page_table(101, 0x1000, 0, 7), untouched<_PAGETABLE_DATA>(),
                                untouched<_PAGETABLE_DATA>()}));
}

TEST_F(PageTableExport, HasTheLow16BitsOfSmallFields)
{
    show(
        "0:1: entry addr:10, buffer:a\n"
        "0:2 Snoop:65535 Segment:65535 LargePage:65535 Addr:20\n"
        "0:3 Snoop:65536 Segment:65537 LargePage:65539 Addr:30\n"
        "0:4 Snoop:-1 Segment:-2 LargePage:-3 Addr:40\n"
        "0:5 Snoop:2147483647 Segment:0 LargePage:-2147483648 Addr:50\n");
    EXPECT_EQ(page_tables(5), (Records{page_table(101, 0x10, 0, 1),
                                       {101, 0x20, 65535, 65535, 65535, 0, 0, 2, 0, 1, -1, 0},
                                       {101, 0x30, 0, 1, 3, 0, 0, 3, 0, 1, -1, 0},
                                       {101, 0x40, 65535, 65534, 65533, 0, 0, 4, 0, 1, -1, 0},
                                       {101, 0x50, 65535, 0, 0, 0, 0, 5, 0, 1, -1, 0}}));
}

TEST_F(PageTableExport, HasIndicesOf32Bits)
{
    show(
        "0:2147483647: entry addr:10, buffer:a\n"
        "0:-2147483648 Snoop:0 Segment:0 LargePage:0 Addr:20\n");
    EXPECT_EQ(page_tables(2),
              (Records{page_table(101, 0x10, 0, 2147483647),
                       {101, 0x20, 0, 0, 0, 0, 0, -2147483647 - 1, 0, 2147483647, -1, 0}}));
}

TEST_F(PageTableExport, HasNoOwnerForASubTableWithoutOne)
{
    show("2:5 Snoop:1 Segment:1 LargePage:1 Addr:10\n");
    EXPECT_EQ(page_tables(1), (Records{{101, 0x10, 1, 1, 1, 0, 2, 5, 0, 0, -1, 0}}));
}

TEST_F(PageTableExport, GoesBeyondTheReservedCapacities)
{
    std::string dump =
        "0:1: entry addr:1, buffer:a\n1:2: entry addr:2, buffer:b\n"
        "2:3: entry addr:3, buffer:c\n";
    for (int index = 0; index < 300100; ++index) {
        dump += "2:" + std::to_string(index) + " Snoop:0 Segment:1 LargePage:0 Addr:7f000000\n";
    }
    show(dump);
    ASSERT_EQ(count_, 300103U);
    const Records records = page_tables(300104);
    EXPECT_EQ(records[2], page_table(101, 3, 2, 3));
    EXPECT_EQ(records[3], (_PAGETABLE_DATA{101, 0x7f000000, 0, 1, 0, 0, 2, 0, 2, 3, -1, 0}));
    EXPECT_EQ(records[300102],
              (_PAGETABLE_DATA{101, 0x7f000000, 0, 1, 0, 0, 2, 300099, 2, 3, -1, 0}));
    EXPECT_EQ(records[300103], untouched<_PAGETABLE_DATA>());
}

}  // namespace
}  // namespace nimba::test
