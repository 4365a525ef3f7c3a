// SPDX-License-Identifier: MIT
// Summaries of adapters whose drivers tell what they do, and while the drivers fail. The machine is
// summary-drivers, whose first adapter is a QV M20 and whose second is a Nimba K6.
#include "live_adapter_fixture.hpp"
#include "summary_fixture.hpp"

namespace nimba::test {
namespace {

constexpr int kM20 = 0;
constexpr int kK6 = 1;

class SummaryDrivers : public SummaryCalls {
  protected:
    SummaryDrivers()
    {
        discover();
        EXPECT_EQ(record_.header.chip_num, 2);
        live_ = drivers_are_live();
        use(kM20);
    }
    ~SummaryDrivers() override
    {
        if (live_) {
            EXPECT_EQ(output_of("nimba-sim fault --clear 2>&1"), "");
        }
    }

    static void fault(const std::string& arguments)
    {
        ASSERT_EQ(output_of("nimba-sim fault " + arguments + " 2>&1"), "");
    }

    bool live_ = false;
};

class SummaryFaults : public SummaryDrivers {
  protected:
    void SetUp() override
    {
        if (!live_) {
            GTEST_SKIP() << "needs live drivers";
        }
    }
};

adapter_summary_ext2 kept_of_driver()
{
    adapter_summary_ext2 record = nothing_told();
    record.driver_version = 0x10002000A;
    record.firmware_version = 0x0008000F0000001C;
    std::strcpy(record.firmware_name, "Simulated adapter");
    record.pixel_fillrate = 9600;
    record.texture_fillrate = 19200;
    record.max_resolution_hdmi_dp = 0x0F0008700000003C;
    record.max_resolution_vga = 0x078004380000004B;
    record.pcie_gen = 4;
    return record;
}

TEST_F(SummaryDrivers, OfAQvChipWithoutDisplaysInTheFileCountsItsConnectors)
{
    EXPECT_EQ(summary(), (SummaryWords{550, 350, 1000, 2048, 4800, 600, 3, 12, 2, 16, 5, 64}));
    EXPECT_EQ(output_, "");
}

TEST_F(SummaryDrivers, OfANimbaChipHasTheDisplaysOfTheFile)
{
    use(kK6);
    EXPECT_EQ(summary(),
              (SummaryWords{550, 350, 1000, 4096, 2000, 600, 3, 13, 2, 4, kPoison, kPoison}));
    EXPECT_EQ(output_, "");
}

TEST_F(SummaryFaults, TellOfUseWhileItIsAccountedFor)
{
    for (int slot : {kM20, kK6}) {
        use(slot);
        adapter_summary_ext2 expected = kept_of_driver();
        expected.memory_clock_freq = 1000;
        expected.gpu_memory_usage = slot == kM20 ? 3 : 6;
        expected.gpu_use_rate_3d = 40;
        expected.gpu_use_rate_video = 30;
        expected.gpu_use_rate_vpp = 20;
        expected.realtime_temperature = 50;
        EXPECT_EQ(words_of(ext2()), words_of(expected));
        exit(slot);
        expected.gpu_use_rate_3d = 0;
        expected.gpu_use_rate_video = 0;
        expected.gpu_use_rate_vpp = 0;
        EXPECT_EQ(words_of(ext2()), words_of(expected));
    }
}

TEST_F(SummaryFaults, AnUnreadableFileTellsNothingAtThatCall)
{
    for (const char* arguments :
         {"open --directory proc", "read --directory proc", "vanish --directory proc", "gone"}) {
        fault(arguments);
        EXPECT_EQ(words_of(ext2()), words_of(nothing_told())) << arguments;
        fault("--clear");
        forget_ext2();
        EXPECT_EQ(ext2().pixel_fillrate, 9600U) << arguments;
        fault(arguments);
        EXPECT_EQ(words_of(ext2()), words_of(nothing_told())) << arguments;
        fault("--clear");
        EXPECT_EQ(ext2().texture_fillrate, 19200U) << arguments;
        forget_ext2();
    }
}

TEST_F(SummaryFaults, WhatTheFileDidNotTellAtTheFirstCallIsNotAskedForAgain)
{
    fault("open --directory proc --first 1");
    adapter_summary_ext2 record = ext2();
    EXPECT_EQ(record.pixel_fillrate, 0U);
    EXPECT_EQ(record.driver_version, 0U);
    EXPECT_EQ(record.realtime_temperature, 50U);
    record = ext2();
    EXPECT_EQ(record.pixel_fillrate, 0U);
    EXPECT_EQ(record.realtime_temperature, 50U);
}

TEST_F(SummaryFaults, UnreadableNodesAreZeroAndWhatIsKeptStaysSo)
{
    for (const char* kind : {"open", "read", "vanish"}) {
        forget_summary();
        for (const char* node : {"eclk", "vclk", "mclk", "coreclk", "fb_size", "miu_channel_num"}) {
            fault(std::string{kind} + " " + node + " --directory info");
        }
        EXPECT_EQ(summary(), (SummaryWords{0, 0, 0, 0, 4800, 0, 3, 12, 0, 16, 5, 64})) << kind;
        fault("--clear");
        EXPECT_EQ(summary(), (SummaryWords{550, 350, 1000, 0, 4800, 600, 3, 12, 0, 16, 5, 64}))
            << kind;
    }
}

TEST_F(SummaryFaults, EachNodeIsReadOnItsOwn)
{
    const SummaryWords all{550, 350, 1000, 2048, 4800, 600, 3, 12, 2, 16, 5, 64};
    for (const auto& [node, word] : {std::pair{"eclk", 0U},
                                     {"vclk", 1U},
                                     {"mclk", 2U},
                                     {"fb_size", 3U},
                                     {"coreclk", 5U},
                                     {"miu_channel_num", 8U}}) {
        forget_summary();
        fault(std::string{"vanish "} + node + " --directory info");
        SummaryWords expected = all;
        expected.at(word) = 0;
        EXPECT_EQ(summary(), expected) << node;
        fault("--clear");
    }
}

TEST_F(SummaryFaults, AnUnreadableFileLeavesANimbaChipWithoutDisplays)
{
    use(kK6);
    fault("open --directory proc");
    EXPECT_EQ(summary(),
              (SummaryWords{550, 350, 1000, 4096, 2000, 600, 0, 0, 2, 4, kPoison, kPoison}));
    EXPECT_EQ(output_, "");
    fault("--clear");
    EXPECT_EQ(summary(),
              (SummaryWords{550, 350, 1000, 4096, 2000, 600, 0, 0, 2, 4, kPoison, kPoison}));
}

}  // namespace
}  // namespace nimba::test
