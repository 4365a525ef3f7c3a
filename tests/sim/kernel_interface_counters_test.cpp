// SPDX-License-Identifier: MIT
// The counters that a program gets from the product's kernel-interface libraries on a simulated
// machine.
#include "sim_run.hpp"
#include "support/live_drivers.hpp"
#include "support/temp_directory.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>

namespace nimba::sim::test {
namespace {

constexpr const char* kNimbaFile = "libnimbahwbridge_v2.so.0.0.0";

// A Nimba K3, always under full load, and a foreign GPU. Library keys may follow.
constexpr const char* kMachine = R"(description = "Steady"
[[adapter]]
chip = "nimba-k3"
bus_id = "0000:01:00.0"
card = 0
[adapter.activity]
load = 100
swing = 0
flips = 1000
engines = [12, 13, 14, 15, 16, 17, 18, 19]
bandwidth = [100, 101, 102, 103, 104, 105, 106, 107, 108, 109, 110, 111]
[[foreign_gpu]]
vendor = "intel"
device = 0x4680
bus_id = "0000:00:02.0"
card = 1
[[kernel_interface]]
file = "libnimbahwbridge_v2.so.0.0.0"
)";

class KernelInterfaceCounters : public ::testing::Test {
  protected:
    // What call_counters prints on the machine with these keys of its library; `first` is a command
    // that the shell runs before it.
    std::string called(const std::string& keys, const std::string& calls,
                       const std::string& device = "/dev/dri/card0",
                       const std::string& first = "true") const
    {
        const std::string file = directory_.write("machine.toml", kMachine + keys);
        const Result result = run_on(file, fmt::format("sh -c '{} && exec {} {} {} {}'", first,
                                                       CALL_COUNTERS, kNimbaFile, device, calls));
        EXPECT_EQ(result.status, 0);
        return result.output;
    }

  private:
    nimba::test::TempDirectory directory_;
};

TEST_F(KernelInterfaceCounters, NimbaLibraryHasTheEntryPointsOfItsFamily)
{
    EXPECT_EQ(called("", ""),
              "gfx_flip_count\ngfx_init_hwinfo\ngfx_deinit_hwinfo\ngfx_get_hwinfo\n"
              "gfx_get_hwinfo_ext\ngfx_get_usage_info\ngfx_get_usage_info_ext\n");
}

TEST_F(KernelInterfaceCounters, LibraryOfTheOldestChipHasTheEntryPointsOfTheOtherFamily)
{
    const Result result = run_on("two-qv", CALL_COUNTERS " libhwbridge_qv.so.0.0.0 /dev/dri/card0");
    EXPECT_EQ(result.output, "qv_init_hwinfo\nqv_deinit_hwinfo\nqv_get_hwinfo\nqvGetHwqInfo\n");
}

TEST_F(KernelInterfaceCounters, LibraryHasTheEntryPointsThatAreNamedAlone)
{
    EXPECT_EQ(called("counters = [\"qvGetHwqInfo\", \"gfx_get_usage_info_ext\"]\n", ""),
              "gfx_get_usage_info_ext\nqvGetHwqInfo\n");
    EXPECT_EQ(called("counters = []\n", ""), "");
}

TEST_F(KernelInterfaceCounters, EachEntryPointCanBeTheOnlyOne)
{
    for (const char* name :
         {"gfx_flip_count", "gfx_init_hwinfo", "gfx_deinit_hwinfo", "gfx_get_hwinfo",
          "gfx_get_hwinfo_ext", "gfx_get_usage_info", "gfx_get_usage_info_ext", "qv_init_hwinfo",
          "qv_deinit_hwinfo", "qv_get_hwinfo", "qvGetHwqInfo"}) {
        EXPECT_EQ(called(fmt::format("counters = [\"{}\"]\n", name), ""), std::string{name} + "\n");
    }
}

TEST_F(KernelInterfaceCounters, FlipsComeWithTheTimeOfTheLast)
{
    std::istringstream output{called("", "gfx_flip_count:moving")};
    std::string name;
    std::string result;
    int64_t time = 0;
    int64_t flips = 0;
    output >> name >> result >> time >> flips;
    EXPECT_EQ(name, "gfx_flip_count:moving:");
    EXPECT_EQ(result, "0,");
    EXPECT_GT(flips, 0);
    EXPECT_EQ(time, flips * 1000000);
}

TEST_F(KernelInterfaceCounters, HardwareInformationHasTwelveWords)
{
    EXPECT_EQ(called("", "gfx_init_hwinfo gfx_get_hwinfo gfx_deinit_hwinfo"),
              "gfx_init_hwinfo: 0, 3 0 0 0 0 0 0 0 0 0 0 0 0\n"
              "gfx_get_hwinfo: 0, 100 101 102 103 104 105 106 107 108 109 110 111 0\n"
              "gfx_deinit_hwinfo: 0, 3 0 0 0 0 0 0 0 0 0 0 0 0\n");
}

TEST_F(KernelInterfaceCounters, ExtendedHardwareInformationHasTheHighestBitOfTheLastWord)
{
    EXPECT_EQ(called("", "gfx_init_hwinfo gfx_get_hwinfo_ext"),
              "gfx_init_hwinfo: 0, 3 0 0 0 0 0 0 0 0 0 0 0 0\n"
              "gfx_get_hwinfo_ext: 0, 100 101 102 103 104 105 106 107 108 109 110 112 0\n");
}

TEST_F(KernelInterfaceCounters, OtherFamilysHardwareInformationIsTheSame)
{
    EXPECT_EQ(called("counters = [\"qv_init_hwinfo\", \"qv_get_hwinfo\", \"qv_deinit_hwinfo\", "
                     "\"gfx_get_hwinfo_ext\"]\n",
                     "qv_init_hwinfo qv_get_hwinfo gfx_get_hwinfo_ext qv_deinit_hwinfo"),
              "qv_init_hwinfo: 0, 3 0 0 0 0 0 0 0 0 0 0 0 0\n"
              "qv_get_hwinfo: 0, 100 101 102 103 104 105 106 107 108 109 110 111 0\n"
              "gfx_get_hwinfo_ext: 0, 100 101 102 103 104 105 106 107 108 109 110 112 0\n"
              "qv_deinit_hwinfo: 0, 3 0 0 0 0 0 0 0 0 0 0 0 0\n");
}

TEST_F(KernelInterfaceCounters, HardwareInformationMustBePreparedFirst)
{
    EXPECT_EQ(called("", "gfx_get_hwinfo gfx_get_hwinfo_ext gfx_deinit_hwinfo"),
              "gfx_get_hwinfo: -1, 3 0 0 0 0 0 0 0 0 0 0 0 0\n"
              "gfx_get_hwinfo_ext: -1, 3 0 0 0 0 0 0 0 0 0 0 0 0\n"
              "gfx_deinit_hwinfo: -1, 3 0 0 0 0 0 0 0 0 0 0 0 0\n");
    EXPECT_EQ(called("counters = [\"qv_get_hwinfo\", \"qv_deinit_hwinfo\"]\n",
                     "qv_get_hwinfo qv_deinit_hwinfo"),
              "qv_get_hwinfo: -1, 3 0 0 0 0 0 0 0 0 0 0 0 0\n"
              "qv_deinit_hwinfo: -1, 3 0 0 0 0 0 0 0 0 0 0 0 0\n");
}

TEST_F(KernelInterfaceCounters, HardwareInformationIsPreparedForOneDeviceBlock)
{
    EXPECT_EQ(called("",
                     "gfx_init_hwinfo gfx_get_hwinfo:other gfx_get_hwinfo_ext:other "
                     "gfx_deinit_hwinfo:other"),
              "gfx_init_hwinfo: 0, 3 0 0 0 0 0 0 0 0 0 0 0 0\n"
              "gfx_get_hwinfo:other: -1, 3 0 0 0 0 0 0 0 0 0 0 0 0\n"
              "gfx_get_hwinfo_ext:other: -1, 3 0 0 0 0 0 0 0 0 0 0 0 0\n"
              "gfx_deinit_hwinfo:other: -1, 3 0 0 0 0 0 0 0 0 0 0 0 0\n");
}

TEST_F(KernelInterfaceCounters, EachFamilyPreparesForItself)
{
    const std::string both =
        "counters = [\"gfx_init_hwinfo\", \"gfx_get_hwinfo\", "
        "\"qv_init_hwinfo\", \"qv_get_hwinfo\"]\n";
    EXPECT_EQ(called(both, "gfx_init_hwinfo qv_get_hwinfo"),
              "gfx_init_hwinfo: 0, 3 0 0 0 0 0 0 0 0 0 0 0 0\n"
              "qv_get_hwinfo: -1, 3 0 0 0 0 0 0 0 0 0 0 0 0\n");
    EXPECT_EQ(called(both, "qv_init_hwinfo gfx_get_hwinfo"),
              "qv_init_hwinfo: 0, 3 0 0 0 0 0 0 0 0 0 0 0 0\n"
              "gfx_get_hwinfo: -1, 3 0 0 0 0 0 0 0 0 0 0 0 0\n");
}

TEST_F(KernelInterfaceCounters, NoHardwareInformationBehindDeinit)
{
    EXPECT_EQ(called("", "gfx_init_hwinfo gfx_deinit_hwinfo gfx_get_hwinfo gfx_get_hwinfo_ext"),
              "gfx_init_hwinfo: 0, 3 0 0 0 0 0 0 0 0 0 0 0 0\n"
              "gfx_deinit_hwinfo: 0, 3 0 0 0 0 0 0 0 0 0 0 0 0\n"
              "gfx_get_hwinfo: -1, 3 0 0 0 0 0 0 0 0 0 0 0 0\n"
              "gfx_get_hwinfo_ext: -1, 3 0 0 0 0 0 0 0 0 0 0 0 0\n");
}

TEST_F(KernelInterfaceCounters, PreparingFailsAsTheMachineSays)
{
    EXPECT_EQ(called("init_result = -5\n", "gfx_init_hwinfo gfx_get_hwinfo"),
              "gfx_init_hwinfo: -5, 3 0 0 0 0 0 0 0 0 0 0 0 0\n"
              "gfx_get_hwinfo: -1, 3 0 0 0 0 0 0 0 0 0 0 0 0\n");
    EXPECT_EQ(called("init_result = 7\ncounters = [\"qv_init_hwinfo\", \"gfx_get_hwinfo_ext\"]\n",
                     "qv_init_hwinfo gfx_get_hwinfo_ext"),
              "qv_init_hwinfo: 7, 3 0 0 0 0 0 0 0 0 0 0 0 0\n"
              "gfx_get_hwinfo_ext: -1, 3 0 0 0 0 0 0 0 0 0 0 0 0\n");
}

constexpr const char* kSwitchUsageOn =
    "printf 1 >/sys/bus/pci/devices/0000:01:00.0/jw_info/enable_usage";

TEST_F(KernelInterfaceCounters, UsageHasThreeWordsAndTheExtendedOneEight)
{
    if (!nimba::test::live_drivers_work(NIMBA_SIM)) {
        GTEST_SKIP() << "needs live drivers";
    }
    EXPECT_EQ(
        called("", "gfx_get_usage_info gfx_get_usage_info_ext", "/dev/dri/card0", kSwitchUsageOn),
        "gfx_get_usage_info: 0, 12 14 17 0 0 0 0 0 0 0 0 0 0\n"
        "gfx_get_usage_info_ext: 0, 3 0 12 13 14 15 16 17 18 19 0 0 0\n");
    EXPECT_EQ(
        called("counters = [\"qvGetHwqInfo\"]\n", "qvGetHwqInfo", "/dev/dri/card0", kSwitchUsageOn),
        "qvGetHwqInfo: 0, 12 14 17 0 0 0 0 0 0 0 0 0 0\n");
}

TEST_F(KernelInterfaceCounters, UsageIsZeroUntilItIsSwitchedOn)
{
    EXPECT_EQ(called("", "gfx_get_usage_info gfx_get_usage_info_ext"),
              "gfx_get_usage_info: 0, 0 0 0 0 0 0 0 0 0 0 0 0 0\n"
              "gfx_get_usage_info_ext: 0, 3 0 0 0 0 0 0 0 0 0 0 0 0\n");
}

TEST_F(KernelInterfaceCounters, ExtendedUsageNeedsTheKindOfItsRecord)
{
    EXPECT_EQ(called("", "gfx_get_usage_info_ext:cleared"),
              "gfx_get_usage_info_ext:cleared: -1, 0 0 0 0 0 0 0 0 0 0 0 0 0\n");
}

TEST_F(KernelInterfaceCounters, NothingWorksWithoutADeviceBlock)
{
    EXPECT_EQ(called("",
                     "gfx_flip_count:null gfx_init_hwinfo:null gfx_deinit_hwinfo:null "
                     "gfx_get_hwinfo:null gfx_get_hwinfo_ext:null gfx_get_usage_info:null "
                     "gfx_get_usage_info_ext:null"),
              "gfx_flip_count:null: -1, -1 -1\n"
              "gfx_init_hwinfo:null: -1, 3 0 0 0 0 0 0 0 0 0 0 0 0\n"
              "gfx_deinit_hwinfo:null: -1, 3 0 0 0 0 0 0 0 0 0 0 0 0\n"
              "gfx_get_hwinfo:null: -1, 3 0 0 0 0 0 0 0 0 0 0 0 0\n"
              "gfx_get_hwinfo_ext:null: -1, 3 0 0 0 0 0 0 0 0 0 0 0 0\n"
              "gfx_get_usage_info:null: -1, 3 0 0 0 0 0 0 0 0 0 0 0 0\n"
              "gfx_get_usage_info_ext:null: -1, 3 0 0 0 0 0 0 0 0 0 0 0 0\n");
}

TEST_F(KernelInterfaceCounters, NothingIsToldWithoutARecord)
{
    EXPECT_EQ(called("",
                     "gfx_flip_count:record gfx_init_hwinfo gfx_get_hwinfo:record "
                     "gfx_get_hwinfo_ext:record gfx_get_usage_info:record "
                     "gfx_get_usage_info_ext:record"),
              "gfx_flip_count:record: -1, -1 -1\n"
              "gfx_init_hwinfo: 0, 3 0 0 0 0 0 0 0 0 0 0 0 0\n"
              "gfx_get_hwinfo:record: -1, 3 0 0 0 0 0 0 0 0 0 0 0 0\n"
              "gfx_get_hwinfo_ext:record: -1, 3 0 0 0 0 0 0 0 0 0 0 0 0\n"
              "gfx_get_usage_info:record: -1, 3 0 0 0 0 0 0 0 0 0 0 0 0\n"
              "gfx_get_usage_info_ext:record: -1, 3 0 0 0 0 0 0 0 0 0 0 0 0\n");
}

TEST_F(KernelInterfaceCounters, OtherDevicesHaveNoCounters)
{
    for (const char* device : {"/dev/dri/card1", "/dev/null", "/nonexistent"}) {
        EXPECT_EQ(called("",
                         "gfx_flip_count gfx_init_hwinfo gfx_get_usage_info "
                         "gfx_get_usage_info_ext",
                         device),
                  "gfx_flip_count: -1, -1 -1\n"
                  "gfx_init_hwinfo: -1, 3 0 0 0 0 0 0 0 0 0 0 0 0\n"
                  "gfx_get_usage_info: -1, 3 0 0 0 0 0 0 0 0 0 0 0 0\n"
                  "gfx_get_usage_info_ext: -1, 3 0 0 0 0 0 0 0 0 0 0 0 0\n")
            << device;
    }
}

TEST_F(KernelInterfaceCounters, RenderNodeHasThoseOfItsCard)
{
    EXPECT_EQ(called("", "gfx_init_hwinfo gfx_get_hwinfo", "/dev/dri/renderD128"),
              "gfx_init_hwinfo: 0, 3 0 0 0 0 0 0 0 0 0 0 0 0\n"
              "gfx_get_hwinfo: 0, 100 101 102 103 104 105 106 107 108 109 110 111 0\n");
}

}  // namespace
}  // namespace nimba::sim::test
