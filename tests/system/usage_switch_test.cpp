// SPDX-License-Identifier: MIT
#include "lifecycle_fixture.hpp"

#include <filesystem>

namespace nimba::test {
namespace {

class UsageSwitch : public LifecycleTest {
  protected:
    std::int32_t write(const char* text) const
    {
        return global<decltype(gpuinfo_set_enable_usage)>("gpuinfo_set_enable_usage")(text);
    }
    void select(int slot)
    {
        record_.chip_id_idx = slot;
        global<decltype(gpuinfo_select_new_chip)>("gpuinfo_select_new_chip")(&record_);
    }
};

TEST_F(UsageSwitch, WritesNothingBeforeASlotIsCurrent)
{
    fill_slot(0, DEVICE_ID_NIMBA_K1, 3);
    EXPECT_EQ(write("1"), 0);
    EXPECT_EQ(usage(0), "?");
}

TEST_F(UsageSwitch, WritesToTheCurrentSlotsNodeAndCountsTheCharacters)
{
    fill_slot(0, DEVICE_ID_NIMBA_K1, 3);
    fill_slot(1, DEVICE_ID_NIMBA_K1, 4);
    select(1);
    EXPECT_EQ(write("1"), 1);
    EXPECT_EQ(usage(0), "?");
    EXPECT_EQ(usage(1), "1");
    EXPECT_EQ(write("off"), 3);
    EXPECT_EQ(usage(1), "off");
    EXPECT_EQ(take_messages(), Texts{"gpuinfo_select_new_chip index: 1, name: Gpu1:Test \n"});
}

TEST_F(UsageSwitch, OverwritesWithoutTruncating)
{
    fill_slot(0, DEVICE_ID_NIMBA_K1, 3);
    info_directories_[0].write("enable_usage", "abc\n");
    select(0);
    EXPECT_EQ(write("1"), 1);
    EXPECT_EQ(usage(0), "1bc\n");
}

TEST_F(UsageSwitch, ReadsTheTextAsAFormat)
{
    fill_slot(0, DEVICE_ID_NIMBA_K1, 3);
    select(0);
    EXPECT_EQ(write("5%%"), 2);
    EXPECT_EQ(usage(0), "5%");
}

TEST_F(UsageSwitch, NeitherCreatesTheNodeNorLeavesADescriptorOpen)
{
    fill_slot(0, DEVICE_ID_NIMBA_K1, 3);
    select(0);
    const auto descriptors = open_descriptors();
    EXPECT_EQ(write("1"), 1);
    std::filesystem::remove(info_directories_[0].path() / "enable_usage");
    EXPECT_EQ(write("1"), 0);
    EXPECT_FALSE(std::filesystem::exists(info_directories_[0].path() / "enable_usage"));
    EXPECT_EQ(open_descriptors(), descriptors);
}

TEST_F(UsageSwitch, StillWritesAfterExit)
{
    use_kernel_interface(kNimbaLibrary);
    fill_slot(0, DEVICE_ID_NIMBA_K1, 3);
    EXPECT_EQ(init(0), DEVICE_ID_NIMBA_K1);
    EXPECT_EQ(exit(0), 0);
    EXPECT_EQ(write("1"), 1);
    EXPECT_EQ(usage(0), "1");
}

}  // namespace
}  // namespace nimba::test
