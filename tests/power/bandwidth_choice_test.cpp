// SPDX-License-Identifier: MIT
// Which functions of the kernel-interface library tell hardware information.
#include "kernel_counters_fixture.hpp"

#include <dlfcn.h>

#include <ostream>

namespace nimba::test {
namespace {

constexpr const char* kNoFunctions = "gfx_xxx interface functions init fail. \n ";

// A stub is named by its functions: I prepares, D ends, E gets in the extended form and G in the
// plain one; small letters are those of the older family.
struct Choice {
    const char* stub;
    const char* init;
    const char* get;
};

void PrintTo(const Choice& choice, std::ostream* out)
{
    *out << choice.stub;
}

class BandwidthChoice : public KernelCountersTest, public testing::WithParamInterface<Choice> {};

TEST_P(BandwidthChoice, CallsTheFirstFunctionsThatAreThere)
{
    const auto [stub, init, get] = GetParam();
    ASSERT_EQ(start(stub), DEVICE_ID_NIMBA_K1);
    EXPECT_EQ(call("bandwidth_init"), 0);
    EXPECT_EQ(take_called(), Texts{init});
    BandwidthInfo info{};
    EXPECT_EQ(global<decltype(get_bandwidth_info)>("get_bandwidth_info")(&info), 0);
    EXPECT_EQ(take_called(), Texts{get});
    EXPECT_EQ(take_messages(), Texts{});
}

INSTANTIATE_TEST_SUITE_P(
    Bandwidth, BandwidthChoice,
    testing::Values(Choice{"hwinfo_IDEG_idg", "gfx_init_hwinfo", "gfx_get_hwinfo_ext"},
                    Choice{"hwinfo_IDG_idg", "gfx_init_hwinfo", "gfx_get_hwinfo"},
                    Choice{"hwinfo_IDE_idg", "gfx_init_hwinfo", "gfx_get_hwinfo_ext"},
                    Choice{"hwinfo_IDEG_", "gfx_init_hwinfo", "gfx_get_hwinfo_ext"},
                    Choice{"hwinfo_IDG_", "gfx_init_hwinfo", "gfx_get_hwinfo"},
                    Choice{"hwinfo_IDE_", "gfx_init_hwinfo", "gfx_get_hwinfo_ext"},
                    Choice{"hwinfo_DEG_idg", "qv_init_hwinfo", "gfx_get_hwinfo_ext"},
                    Choice{"hwinfo_DG_idg", "qv_init_hwinfo", "qv_get_hwinfo"},
                    Choice{"hwinfo_IEG_idg", "qv_init_hwinfo", "gfx_get_hwinfo_ext"},
                    Choice{"hwinfo_IG_idg", "qv_init_hwinfo", "qv_get_hwinfo"},
                    Choice{"hwinfo_ID_idg", "qv_init_hwinfo", "qv_get_hwinfo"},
                    Choice{"hwinfo_E_idg", "qv_init_hwinfo", "gfx_get_hwinfo_ext"},
                    Choice{"hwinfo_E_id", "qv_init_hwinfo", "gfx_get_hwinfo_ext"},
                    Choice{"hwinfo__idg", "qv_init_hwinfo", "qv_get_hwinfo"}));

class BandwidthWithoutFunctions : public KernelCountersTest,
                                  public testing::WithParamInterface<const char*> {};

TEST_P(BandwidthWithoutFunctions, FailsWithAMessageAndCallsNothing)
{
    ASSERT_EQ(start(GetParam()), DEVICE_ID_NIMBA_K1);
    EXPECT_EQ(call("bandwidth_init"), -1);
    EXPECT_EQ(take_messages(), Texts{kNoFunctions});
    EXPECT_EQ(take_called(), Texts{});
}

INSTANTIATE_TEST_SUITE_P(Bandwidth, BandwidthWithoutFunctions,
                         testing::Values("hwinfo__", "hwinfo_ID_", "hwinfo_ID_id", "hwinfo__id",
                                         "hwinfo__ig", "hwinfo__dg", "hwinfo_E_i",
                                         // what the first family has does not help the other
                                         "hwinfo_IG_id", "hwinfo_DG_dg", "hwinfo_DG_ig",
                                         "hwinfo_DEG_ig", "hwinfo_IEG_dg", "hwinfo_IEG_ig"));

using BandwidthBlock = KernelCountersTest;

TEST_F(BandwidthBlock, AndDescriptorAreGivenToTheInit)
{
    for (const char* stub : {"hwinfo_IDEG_idg", "hwinfo__idg"}) {
        ASSERT_EQ(start(stub), DEVICE_ID_NIMBA_K1);
        EXPECT_EQ(call("bandwidth_init"), 0);
        const auto calls = take_calls();
        ASSERT_EQ(calls.size(), 1U);
        EXPECT_EQ(calls[0].drm_fd, kDrmFd);
        EXPECT_NE(calls[0].block, nullptr);
        EXPECT_EQ(calls[0].block, block());
        exit(0);
        empty_search_directory();
    }
}

TEST_F(BandwidthBlock, ThatIsMissingIsNotPrepared)
{
    results_["gfx_get_struct_size"] = 0;
    EXPECT_EQ(start("hwinfo_IDEG_idg"), -1);
    ASSERT_EQ(block(), nullptr);
    results_["gfx_init_hwinfo"] = 7;
    EXPECT_EQ(call("bandwidth_init"), 0);
    EXPECT_EQ(take_called(), Texts{});
    EXPECT_EQ(take_messages(), Texts{});
}

TEST_F(BandwidthBlock, ThatIsMissingDoesNotMakeUpForMissingFunctions)
{
    results_["gfx_get_struct_size"] = 0;
    EXPECT_EQ(start("hwinfo_E_i"), -1);
    ASSERT_EQ(block(), nullptr);
    EXPECT_EQ(call("bandwidth_init"), -1);
    EXPECT_EQ(take_called(), Texts{});
    EXPECT_EQ(take_messages(), Texts{kNoFunctions});
}

TEST_F(BandwidthBlock, ThatCannotBePreparedFailsTheInit)
{
    ASSERT_EQ(start("hwinfo_IDEG_idg"), DEVICE_ID_NIMBA_K1);
    for (const std::int32_t result : {1, -1, 22}) {
        results_["gfx_init_hwinfo"] = result;
        EXPECT_EQ(call("bandwidth_init"), -1);
        EXPECT_EQ(take_called(), Texts{"gfx_init_hwinfo"});
        EXPECT_EQ(take_messages(), Texts{"gfx_init_hwinfo fail. \n "});
    }
}

TEST_F(BandwidthBlock, OfTheOlderFamilyFailsTheInitWithTheSameMessage)
{
    ASSERT_EQ(start("hwinfo__idg"), DEVICE_ID_NIMBA_K1);
    results_["qv_init_hwinfo"] = 1;
    EXPECT_EQ(call("bandwidth_init"), -1);
    EXPECT_EQ(take_called(), Texts{"qv_init_hwinfo"});
    EXPECT_EQ(take_messages(), Texts{"gfx_init_hwinfo fail. \n "});
}

TEST_F(BandwidthBlock, IsPreparedByEveryInitAndNeverEnded)
{
    ASSERT_EQ(start("hwinfo_IDEG_idg"), DEVICE_ID_NIMBA_K1);
    EXPECT_EQ(call("bandwidth_init"), 0);
    EXPECT_EQ(call("bandwidth_init"), 0);
    exit(0);
    EXPECT_EQ(take_called(), (Texts{"gfx_init_hwinfo", "gfx_init_hwinfo"}));
}

TEST_F(BandwidthBlock, NeedsALibrary)
{
    EXPECT_EQ(call("bandwidth_init"), -1);
    EXPECT_EQ(take_messages(), Texts{kNoFunctions});
    ASSERT_EQ(start("hwinfo_IDEG_idg"), DEVICE_ID_NIMBA_K1);
    exit(0);
    take_messages();
    EXPECT_EQ(call("bandwidth_init"), -1);
    EXPECT_EQ(take_messages(), Texts{kNoFunctions});
}

TEST_F(BandwidthBlock, IsNotPreparedByAnyOtherLibraryOfTheProcess)
{
    install_stub("hwinfo_IDEG_idg", "unrelated.so");
    const HeldLibrary unrelated{"unrelated.so", RTLD_GLOBAL};
    EXPECT_EQ(call("bandwidth_init"), -1);
    EXPECT_EQ(take_called(), Texts{});
}

}  // namespace
}  // namespace nimba::test
