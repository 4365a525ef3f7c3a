// SPDX-License-Identifier: MIT
#include "dvfs_fixture.hpp"

namespace nimba::test {
namespace {

class DvfsClocks : public DvfsTest {
  protected:
    using Words = std::array<std::uint32_t, 5>;

    // The record between two words of the caller's.
    Words read_clocks() const
    {
        Words words{11, 0xEEEEEEEE, 0xEEEEEEEE, 0xEEEEEEEE, 12};
        DvfsClockInfo clocks;
        std::memcpy(&clocks, &words[1], sizeof clocks);
        EXPECT_EQ(function<decltype(get_dvfs_info)>("get_dvfs_info")(&clocks), 0);
        std::memcpy(&words[1], &clocks, sizeof clocks);
        return words;
    }
};

TEST_F(DvfsClocks, AreThoseOfTheEngineTheVideoAndTheMemory)
{
    node("eclk", "800\n");
    node("vclk", "500\n");
    node("mclk", "2400\n");
    EXPECT_EQ(read_clocks(), (Words{11, 800, 500, 2400, 12}));
}

TEST_F(DvfsClocks, AreZeroWithoutTheirNode)
{
    EXPECT_EQ(read_clocks(), (Words{11, 0, 0, 0, 12}));
    node("vclk", "500\n");
    node("mclk", "2400\n");
    EXPECT_EQ(read_clocks(), (Words{11, 0, 500, 2400, 12}));
    node("eclk", "800\n");
    remove_node("vclk");
    EXPECT_EQ(read_clocks(), (Words{11, 800, 0, 2400, 12}));
    remove_node("mclk");
    EXPECT_EQ(read_clocks(), (Words{11, 800, 0, 0, 12}));
}

TEST_F(DvfsClocks, AreTheDecimalNumbersThatBeginTheirNodes)
{
    node("eclk", "-1\n");
    node("vclk", "0x10\n");
    node("mclk", "fast\n");
    EXPECT_EQ(read_clocks(), (Words{11, 0xffffffff, 0, 0, 12}));
    node("eclk", "");
    node("vclk", " 7 MHz");
    node("mclk", "2147483647");
    EXPECT_EQ(read_clocks(), (Words{11, 0, 7, 2147483647, 12}));
}

TEST_F(DvfsClocks, AreNotReadFromTheHwmonDirectory)
{
    adapter_.hwmon().write("eclk", "800\n");
    EXPECT_EQ(read_clocks(), (Words{11, 0, 0, 0, 12}));
}

TEST_F(DvfsClocks, AreNotWhatAWriteComparesWith)
{
    show_empty_nodes();
    node("power_mode", "power_mode:0x5\n");
    node("eclk", "800\n");
    read_clocks();
    EXPECT_EQ(write({}), Texts{});
}

TEST_F(DvfsClocks, AreZeroBeforeAnAdapterIsCurrent)
{
    node("eclk", "800\n");
    library_.symbol<gpu_infos*>("pCurrent_gpu_infos") = nullptr;
    EXPECT_EQ(read_clocks(), (Words{11, 0, 0, 0, 12}));
}

}  // namespace
}  // namespace nimba::test
