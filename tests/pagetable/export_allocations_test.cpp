// SPDX-License-Identifier: MIT
// The allocation records that a host gets.
#include "export_fixture.hpp"

#include <stdexcept>
#include <string>

namespace nimba::test {
namespace {

using Records = std::vector<_ALLOCATION_DATA>;

constexpr _ALLOCATION_DATA allocation(std::int32_t pid, std::int64_t handle, std::int64_t size,
                                      std::int64_t address)
{
    return {pid, 0, handle, size, address, {}};
}

class AllocationExport : public ExportTest {
  protected:
    // The driver has one allocation, "2a", whose node has these texts.
    void show(const std::string& pid, const std::string& address, const std::string& size)
    {
        driver_.forget_allocations();
        driver_.add_allocation("2a", vm_node(pid, address, size));
        collect_all();
    }
    // The driver has one allocation, with this name.
    void show_named(const std::string& name)
    {
        driver_.forget_allocations();
        driver_.add_allocation(name, vm_node("1", "2", "3"));
        collect_all();
    }
};

TEST_F(AllocationExport, IsInTheOrderOfTheListing)
{
    driver_.add_allocation("2b", vm_node("102", "200000000", "1000"));
    driver_.add_allocation("2a", vm_node("101", "100000000", "40000"));
    collect_all();
    count_allocations();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(count_, 2U);
    EXPECT_EQ(allocations(3), (Records{allocation(102, 0x2b, 0x1000, 0x200000000),
                                       allocation(101, 0x2a, 0x40000, 0x100000000),
                                       untouched<_ALLOCATION_DATA>()}));
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, "");
}

TEST_F(AllocationExport, HasARecordForEachAddressSpace)
{
    driver_.add_allocation("1", vm_node("101", "a000", "10") + vm_node("102", "b000", "10"));
    driver_.add_allocation("2", "not mapped\n");
    driver_.add_allocation("3", "header\n" + vm_node("101", "c000", "20"));
    collect_all();
    count_allocations();
    EXPECT_EQ(count_, 3U);
    EXPECT_EQ(allocations(3),
              (Records{allocation(101, 1, 0x10, 0xa000), allocation(102, 1, 0x10, 0xb000),
                       allocation(101, 3, 0x20, 0xc000)}));
}

TEST_F(AllocationExport, IsEmptyBeforeTheFirstReading)
{
    driver_.add_allocation("1", vm_node("101", "a000", "10"));
    count_allocations();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(count_, 0U);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(allocations(1), Records{untouched<_ALLOCATION_DATA>()});
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, "");
}

TEST_F(AllocationExport, OfNoAllocationsWritesNothing)
{
    collect_all();
    count_allocations();
    EXPECT_EQ(count_, 0U);
    EXPECT_EQ(allocations(1), Records{untouched<_ALLOCATION_DATA>()});
    EXPECT_EQ(output_, "");
}

TEST_F(AllocationExport, DoesNotReadTheDriver)
{
    show("101", "a000", "10");
    driver_.add_allocation("2b", vm_node("102", "b000", "20"));
    count_allocations();
    EXPECT_EQ(count_, 1U);
    EXPECT_EQ(allocations(2),
              (Records{allocation(101, 0x2a, 0x10, 0xa000), untouched<_ALLOCATION_DATA>()}));
}

TEST_F(AllocationExport, WithABufferDoesNotTouchTheCount)
{
    show("101", "a000", "10");
    _ALLOCATION_DATA record;
    count_ = 0;
    run([&] { return get_allocation_data(&record, &count_); });
    EXPECT_EQ(count_, 0U);
    EXPECT_EQ(record, allocation(101, 0x2a, 0x10, 0xa000));
}

TEST_F(AllocationExport, ReplacesWhatTheReadingBeforeItKept)
{
    show("101", "a000", "10");
    show("102", "b000", "20");
    count_allocations();
    EXPECT_EQ(count_, 1U);
    EXPECT_EQ(allocations(1), (Records{allocation(102, 0x2a, 0x20, 0xb000)}));
}

TEST_F(AllocationExport, HasAnAllocationOnceMoreForAFailedPass)
{
    driver_.add_allocation("1", vm_node("101", "a000", "10"));
    driver_.list_allocation("gone");
    const DuringPauses restoring{[&] {
        driver_.forget_allocations();
        driver_.add_allocation("2", vm_node("102", "b000", "20"));
    }};
    collect_all();
    count_allocations();
    EXPECT_EQ(count_, 2U);
    EXPECT_EQ(allocations(2),
              (Records{allocation(101, 1, 0x10, 0xa000), allocation(102, 2, 0x20, 0xb000)}));
}

TEST_F(AllocationExport, ConvertsTheLargestNumbers)
{
    show("2147483647", "7fffffffffffffff", "7FFFFFFFFFFFFFFF");
    EXPECT_EQ(
        allocations(1),
        (Records{allocation(2147483647, 0x2a, 9223372036854775807LL, 9223372036854775807LL)}));
    show_named("7fffffffffffffff");
    EXPECT_EQ(allocations(1), (Records{allocation(1, 9223372036854775807LL, 3, 2)}));
}

TEST_F(AllocationExport, ConvertsTheSmallestNumbers)
{
    show("-2147483648", "-8000000000000000", "-1");
    EXPECT_EQ(allocations(1),
              (Records{allocation(-2147483647 - 1, 0x2a, -1, -9223372036854775807LL - 1)}));
}

TEST_F(AllocationExport, ConvertsPrefixesBlanksAndWhatBeginsWithANumber)
{
    show("  7 of 8", "0x10", "\t20 bytes");
    EXPECT_EQ(allocations(1), (Records{allocation(7, 0x2a, 0x20, 0x10)}));
    show("0x7", "0X1F", "+a");
    EXPECT_EQ(allocations(1), (Records{allocation(0, 0x2a, 10, 0x1f)}));
    show_named("0x2A.old");
    EXPECT_EQ(allocations(1), (Records{allocation(1, 0x2a, 3, 2)}));
}

TEST_F(AllocationExport, RefusesTextsThatAreNoNumbers)
{
    show("", "1", "1");
    EXPECT_THROW(allocations(1), std::invalid_argument);
    show("x", "1", "1");
    EXPECT_THROW(allocations(1), std::invalid_argument);
    show("1", "", "1");
    EXPECT_THROW(allocations(1), std::invalid_argument);
    show("1", "1", "none");
    EXPECT_THROW(allocations(1), std::invalid_argument);
    show_named("window");
    EXPECT_THROW(allocations(1), std::invalid_argument);
    EXPECT_EQ(Get_Local_Data_Status, 0);
}

TEST_F(AllocationExport, RefusesANodeWithoutItsKeys)
{
    for (const char* missing : {"device_pid = 1\n", "gpu_va = 2\n", "size = 3\n"}) {
        std::string node = "=====vm node info=====\ndevice_pid = 1\ngpu_va = 2\nsize = 3\n";
        node.erase(node.find(missing), std::strlen(missing));
        driver_.forget_allocations();
        driver_.add_allocation("2a", node);
        collect_all();
        count_allocations();
        EXPECT_EQ(count_, 1U) << missing;
        EXPECT_THROW(allocations(1), std::invalid_argument) << missing;
    }
}

TEST_F(AllocationExport, NeedsNoProcessName)
{
    driver_.add_allocation("2a", "=====vm node info=====\ndevice_pid = 1\ngpu_va = 2\nsize = 3\n");
    collect_all();
    EXPECT_EQ(allocations(1), (Records{allocation(1, 0x2a, 3, 2)}));
}

TEST_F(AllocationExport, RefusesNumbersThatDoNotFit)
{
    show("2147483648", "1", "1");
    EXPECT_THROW(allocations(1), std::out_of_range);
    show("-2147483649", "1", "1");
    EXPECT_THROW(allocations(1), std::out_of_range);
    show("1", "8000000000000000", "1");
    EXPECT_THROW(allocations(1), std::out_of_range);
    show("1", "1", "ffffffffffffffff");
    EXPECT_THROW(allocations(1), std::out_of_range);
    show_named("8000000000000000");
    EXPECT_THROW(allocations(1), std::out_of_range);
    EXPECT_EQ(Get_Local_Data_Status, 0);
}

TEST_F(AllocationExport, WritesTheRecordsBeforeARefusedOne)
{
    driver_.add_allocation("1", vm_node("101", "a000", "10"));
    driver_.add_allocation("2", vm_node("102", "b000", ""));
    driver_.add_allocation("3", vm_node("103", "c000", "30"));
    collect_all();
    Records records(3, untouched<_ALLOCATION_DATA>());
    EXPECT_THROW(run([&] { return get_allocation_data(records.data(), &count_); }),
                 std::invalid_argument);
    EXPECT_EQ(records[0], allocation(101, 1, 0x10, 0xa000));
    EXPECT_EQ(records[2], untouched<_ALLOCATION_DATA>());
}

TEST_F(AllocationExport, DoesNotDependOnPageTableRecords)
{
    add("1", "x");
    show("101", "a000", "10");
    EXPECT_THROW(page_tables(1), std::invalid_argument);
    EXPECT_EQ(allocations(1), (Records{allocation(101, 0x2a, 0x10, 0xa000)}));
}

}  // namespace
}  // namespace nimba::test
