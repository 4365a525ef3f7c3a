// SPDX-License-Identifier: MIT
// How a reading of the driver ends, and what the queries behind it say.
#include "export_fixture.hpp"
#include "support/scoped_print_callback.hpp"

#include <filesystem>
#include <stdexcept>

namespace nimba::test {
namespace {

namespace fs = std::filesystem;

class PageTableStatus : public ExportTest {
  protected:
    // Every query but a reading says that the last reading failed, and writes nothing.
    void expect_nothing_told()
    {
        count_ = 4242;
        EXPECT_EQ(page_tables(1), (std::vector{untouched<_PAGETABLE_DATA>()}));
        EXPECT_EQ(status_, 0);
        EXPECT_EQ(output_, kFailed);
        count_allocations();
        EXPECT_EQ(status_, 0);
        EXPECT_EQ(count_, 4242U);
        EXPECT_EQ(output_, kFailed);
        EXPECT_EQ(allocations(1), (std::vector{untouched<_ALLOCATION_DATA>()}));
        EXPECT_EQ(status_, 0);
        EXPECT_EQ(output_, kFailed);
        EXPECT_EQ(Get_Local_Data_Status, -1);
    }
    // There are one page-table entry and one allocation to tell.
    void expect_all_told()
    {
        collect_all();
        EXPECT_EQ(status_, 0);
        EXPECT_EQ(output_, "");
        EXPECT_EQ(Get_Local_Data_Status, 0);
        EXPECT_EQ(count_, 1U);
        EXPECT_EQ(page_tables(1),
                  (std::vector<_PAGETABLE_DATA>{{101, 0x1000, 0, 0, 0, 0, 0, 7, 0, 0, 1, 0}}));
        EXPECT_EQ(output_, "");
        count_ = 4242;
        count_allocations();
        EXPECT_EQ(count_, 1U);
        EXPECT_EQ(allocations(1),
                  (std::vector<_ALLOCATION_DATA>{{101, 0, 0x2a, 0x10, 0xa000, {}}}));
        EXPECT_EQ(output_, "");
    }
    void show_one_of_each()
    {
        driver_.forget_devices();
        driver_.forget_allocations();
        add("1", "101");
        driver_.add_allocation("2a", vm_node("101", "a000", "10"));
    }
};

TEST_F(PageTableStatus, BeforeTheFirstReadingIsThatOfNothing)
{
    add("1", "101");
    EXPECT_EQ(page_tables(1), (std::vector{untouched<_PAGETABLE_DATA>()}));
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(Get_Local_Data_Status, 0);
    EXPECT_EQ(ps_.take_calls(), "");
}

TEST_F(PageTableStatus, OfAReadingThatSucceedsIsZero)
{
    show_one_of_each();
    Get_Local_Data_Status = 7;
    expect_all_told();
}

TEST_F(PageTableStatus, OfAReadingWithoutADriverIsToldByTheStatusAlone)
{
    fs::remove_all(driver_.devices());
    fs::remove_all(driver_.allocations());
    collect_all();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, kFailed);
    EXPECT_EQ(count_, 4242U);
    EXPECT_EQ(Get_Local_Data_Status, -1);
    EXPECT_EQ(take_pauses(), Pauses(20, std::chrono::microseconds{1000}));
    expect_nothing_told();
}

TEST_F(PageTableStatus, OfAReadingThatFailsAtADeviceStays)
{
    show_one_of_each();
    driver_.list_device("gone");
    collect_all();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, repeated("Fail to read pid info. skip...\n", 10) + kFailed);
    EXPECT_EQ(count_, 4242U);
    EXPECT_EQ(Get_Local_Data_Status, -1);
    expect_nothing_told();
    expect_nothing_told();
}

TEST_F(PageTableStatus, OfAReadingThatFailsAtAnAllocationStays)
{
    show_one_of_each();
    driver_.list_allocation("gone");
    collect_all();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_,
              repeated("Fail to read allocation info.. skip and try it again...\n", 10) + kFailed);
    EXPECT_EQ(count_, 4242U);
    EXPECT_EQ(Get_Local_Data_Status, -1);
    expect_nothing_told();
}

TEST_F(PageTableStatus, OfAReadingThatNeededMorePassesIsZero)
{
    show_one_of_each();
    driver_.forget_devices();
    driver_.list_device("late");
    const DuringPauses restoring{[&] {
        driver_.forget_devices();
        add("1", "101");
    }};
    collect_all();
    EXPECT_EQ(output_, "Fail to read pid info. skip...\n");
    EXPECT_EQ(Get_Local_Data_Status, 0);
    EXPECT_EQ(count_, 1U);
}

TEST_F(PageTableStatus, ReturnsToZeroWithAReadingThatSucceeds)
{
    driver_.list_device("gone");
    collect_all();
    EXPECT_EQ(Get_Local_Data_Status, -1);
    show_one_of_each();
    expect_all_told();
}

TEST_F(PageTableStatus, OfAFailureReplacesThatOfASuccess)
{
    show_one_of_each();
    expect_all_told();
    driver_.list_device("gone");
    collect_all();
    expect_nothing_told();
}

TEST_F(PageTableStatus, OfAReadingThatAnErrorLeavesIsThatOfAFailure)
{
    show_one_of_each();
    expect_all_told();
    driver_.forget_devices();
    driver_.add_device("1", "pid = 101\n", "0:x: entry addr:10, buffer:a\n");
    count_ = 4242;
    EXPECT_THROW(collect_all(), std::invalid_argument);
    EXPECT_EQ(count_, 4242U);
    EXPECT_EQ(Get_Local_Data_Status, -1);
    expect_nothing_told();
    show_one_of_each();
    expect_all_told();
}

TEST_F(PageTableStatus, OfAReadingIsNotThatOfACopyThatAnErrorLeaves)
{
    driver_.add_device("1", "pid = 101\n", "0:1: entry addr:80000000, buffer:a\n");
    driver_.add_allocation("2a", vm_node("x", "1", "1"));
    collect_all();
    EXPECT_THROW(page_tables(1), std::out_of_range);
    EXPECT_THROW(allocations(1), std::invalid_argument);
    EXPECT_EQ(Get_Local_Data_Status, 0);
    count_ = 4242;
    count_allocations();
    EXPECT_EQ(count_, 1U);
    EXPECT_EQ(output_, "");
}

TEST_F(PageTableStatus, OfAFailureLeavesWhatWasReadInTheLists)
{
    show_one_of_each();
    driver_.list_device("gone");
    collect_all();
    EXPECT_EQ(Pagetable_List.size(), 10U);
    EXPECT_EQ(Allocation_List.size(), 1U);
    driver_.list_allocation("gone");
    collect_all();
    EXPECT_EQ(Pagetable_List.size(), 10U);
    EXPECT_EQ(Allocation_List.size(), 10U);
}

TEST_F(PageTableStatus, OfAReadingGoesWithNewLists)
{
    show_one_of_each();
    Pagetable_List.resize(3);
    Allocation_List.resize(3);
    collect_all();
    ASSERT_EQ(Pagetable_List.size(), 1U);
    EXPECT_STREQ(Pagetable_List[0].pid, "101");
    ASSERT_EQ(Allocation_List.size(), 1U);
    EXPECT_EQ(Allocation_List[0].allocation_handle, "2a");
    Pagetable_List.resize(3);
    fs::remove_all(driver_.devices());
    collect_all();
    EXPECT_TRUE(Pagetable_List.empty());
}

TEST_F(PageTableStatus, IsToldOnStandardOutputAlone)
{
    driver_.list_device("gone");
    const ScopedPrintCallback callback{keep_message};
    collect_all();
    EXPECT_EQ(take_messages(), Texts{});
}

}  // namespace
}  // namespace nimba::test
