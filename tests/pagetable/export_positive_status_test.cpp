// SPDX-License-Identifier: MIT
// A status that a host has written itself: only a negative one stands for a failed reading.
#include "export_fixture.hpp"

namespace nimba::test {
namespace {

class StatusOfTheHost : public ExportTest {
  protected:
    StatusOfTheHost()
    {
        add("1", "101");
        driver_.add_allocation("2a", vm_node("101", "a000", "10"));
        collect_all();
        count_ = 4242;
    }
};

TEST_F(StatusOfTheHost, ThatIsPositiveKeepsNothingBack)
{
    Get_Local_Data_Status = 7;
    EXPECT_EQ(page_tables(1),
              (std::vector<_PAGETABLE_DATA>{{101, 0x1000, 0, 0, 0, 0, 0, 7, 0, 0, 1, 0}}));
    EXPECT_EQ(output_, "");
    count_allocations();
    EXPECT_EQ(count_, 1U);
    EXPECT_EQ(allocations(1), (std::vector<_ALLOCATION_DATA>{{101, 0, 0x2a, 0x10, 0xa000, {}}}));
    EXPECT_EQ(output_, "");
    EXPECT_EQ(Get_Local_Data_Status, 7);
}

TEST_F(StatusOfTheHost, ThatIsNegativeKeepsEverythingBack)
{
    Get_Local_Data_Status = -7;
    EXPECT_EQ(page_tables(1), (std::vector{untouched<_PAGETABLE_DATA>()}));
    EXPECT_EQ(output_, kFailed);
    count_allocations();
    EXPECT_EQ(count_, 4242U);
    EXPECT_EQ(output_, kFailed);
    EXPECT_EQ(allocations(1), (std::vector{untouched<_ALLOCATION_DATA>()}));
    EXPECT_EQ(output_, kFailed);
    EXPECT_EQ(Get_Local_Data_Status, -7);
}

}  // namespace
}  // namespace nimba::test
