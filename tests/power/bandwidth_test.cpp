// SPDX-License-Identifier: MIT
// What a caller gets of the hardware information.
#include "kernel_counters_fixture.hpp"

#include <dlfcn.h>

#include <filesystem>

namespace nimba::test {
namespace {

const Words kInfo{101, 102, 103, 104, 105, 106, 107, 108, 109, 110, 111, 112};
const Words kUnwrittenInfo(12, kUnwritten);

class Bandwidth : public KernelCountersTest {
  protected:
    // Starts with the stub and chooses its functions.
    void choose(const char* stub, std::uint32_t chip)
    {
        ASSERT_EQ(start(stub, chip), static_cast<std::int32_t>(chip));
        ASSERT_EQ(call("bandwidth_init"), 0);
        take_calls();
    }
    // Queries over a record that is unwritten before; the result is always 0.
    Words query()
    {
        info_ = unwritten_record<BandwidthInfo>();
        EXPECT_EQ(global<decltype(get_bandwidth_info)>("get_bandwidth_info")(&info_), 0);
        return {info_.words, info_.words + 12};
    }

    BandwidthInfo info_{};
};

TEST_F(Bandwidth, OfTheExtendedFunctionIsWhatItWritesToTheCallersRecord)
{
    choose("hwinfo_IDEG_idg", DEVICE_ID_QV_M20);
    answers_["gfx_get_hwinfo_ext"] = {1, 2, 3, 4, 5};
    EXPECT_EQ(query(), (Words{1, 2, 3, 4, 5, kUnwritten, kUnwritten, kUnwritten, kUnwritten,
                              kUnwritten, kUnwritten, kUnwritten}));
    const auto calls = take_calls();
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_EQ(calls[0].function, "gfx_get_hwinfo_ext");
    EXPECT_EQ(calls[0].drm_fd, kDrmFd);
    EXPECT_NE(calls[0].block, nullptr);
    EXPECT_EQ(calls[0].block, block());
    EXPECT_EQ(calls[0].record, &info_);
    EXPECT_EQ(calls[0].words, kUnwrittenInfo);
}

TEST_F(Bandwidth, OfThePlainFunctionIsCopiedWordByWord)
{
    for (const char* stub : {"hwinfo_IDG_", "hwinfo__idg"}) {
        for (const std::uint32_t chip :
             Words{DEVICE_ID_NIMBA_K1, DEVICE_ID_NIMBA_K6, DEVICE_ID_QV_M30, DEVICE_ID_QV_M40}) {
            choose(stub, chip);
            answers_["gfx_get_hwinfo"] = kInfo;
            answers_["qv_get_hwinfo"] = kInfo;
            EXPECT_EQ(query(), kInfo) << stub << chip;
            exit(0);
            empty_search_directory();
        }
    }
}

TEST_F(Bandwidth, OfThePlainFunctionHasTwoOfTheLastWordsOnOneChip)
{
    for (const char* stub : {"hwinfo_IDG_", "hwinfo__idg"}) {
        choose(stub, DEVICE_ID_QV_M20);
        answers_["gfx_get_hwinfo"] = kInfo;
        answers_["qv_get_hwinfo"] = kInfo;
        EXPECT_EQ(query(), (Words{101, 102, 103, 104, kUnwritten, kUnwritten, kUnwritten,
                                  kUnwritten, 106, 107, kUnwritten, kUnwritten}));
        exit(0);
        empty_search_directory();
    }
}

TEST_F(Bandwidth, OfThePlainFunctionComesThroughAClearedRecord)
{
    choose("hwinfo_IDG_", DEVICE_ID_NIMBA_K1);
    answers_["gfx_get_hwinfo"] = kInfo;
    query();
    answers_["gfx_get_hwinfo"] = {};
    EXPECT_EQ(query(), Words(12, 0));
    const auto calls = take_calls();
    ASSERT_EQ(calls.size(), 2U);
    for (const CounterCall& call : calls) {
        EXPECT_EQ(call.function, "gfx_get_hwinfo");
        EXPECT_EQ(call.drm_fd, kDrmFd);
        EXPECT_EQ(call.block, block());
        EXPECT_NE(call.record, &info_);
        EXPECT_EQ(call.words, Words(12, 0));
    }
}

TEST_F(Bandwidth, DoesNotDependOnWhatTheFunctionReturns)
{
    choose("hwinfo_IDG_", DEVICE_ID_NIMBA_K1);
    answers_["gfx_get_hwinfo"] = kInfo;
    results_["gfx_get_hwinfo"] = -1;
    EXPECT_EQ(query(), kInfo);
    exit(0);
    empty_search_directory();
    choose("hwinfo_IDE_", DEVICE_ID_NIMBA_K1);
    answers_["gfx_get_hwinfo_ext"] = kInfo;
    results_["gfx_get_hwinfo_ext"] = -1;
    EXPECT_EQ(query(), kInfo);
}

TEST_F(Bandwidth, IsAskedForWithoutABlockToo)
{
    results_["gfx_get_struct_size"] = 0;
    EXPECT_EQ(start("hwinfo_IDG_"), -1);
    EXPECT_EQ(call("bandwidth_init"), 0);
    answers_["gfx_get_hwinfo"] = kInfo;
    EXPECT_EQ(query(), kInfo);
    const auto calls = take_calls();
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_EQ(calls[0].block, nullptr);
}

TEST_F(Bandwidth, WritesNothingBeforeItsFunctionsAreChosen)
{
    EXPECT_EQ(query(), kUnwrittenInfo);
    ASSERT_EQ(start("hwinfo_IDEG_idg"), DEVICE_ID_NIMBA_K1);
    EXPECT_EQ(query(), kUnwrittenInfo);
    EXPECT_EQ(take_called(), Texts{});
}

TEST_F(Bandwidth, WritesNothingWithoutAnInitThatSucceeded)
{
    results_["gfx_init_hwinfo"] = 1;
    for (const char* stub : {"hwinfo_IDE_", "hwinfo_IDG_", "hwinfo_E_i", "hwinfo__ig"}) {
        ASSERT_EQ(start(stub), DEVICE_ID_NIMBA_K1);
        EXPECT_EQ(call("bandwidth_init"), -1);
        take_calls();
        EXPECT_EQ(query(), kUnwrittenInfo) << stub;
        EXPECT_EQ(take_called(), Texts{}) << stub;
        exit(0);
        empty_search_directory();
    }
}

TEST_F(Bandwidth, WritesNothingAfterALaterInitFailed)
{
    for (const char* stub : {"hwinfo_IDE_", "hwinfo_IDG_"}) {
        choose(stub, DEVICE_ID_NIMBA_K1);
        results_["gfx_init_hwinfo"] = 1;
        EXPECT_EQ(call("bandwidth_init"), -1);
        take_calls();
        EXPECT_EQ(query(), kUnwrittenInfo) << stub;
        EXPECT_EQ(take_called(), Texts{}) << stub;
        results_["gfx_init_hwinfo"] = 0;
        exit(0);
        empty_search_directory();
    }
}

TEST_F(Bandwidth, WritesNothingAfterExit)
{
    for (const char* stub : {"hwinfo_IDE_", "hwinfo_IDG_"}) {
        choose(stub, DEVICE_ID_NIMBA_K1);
        exit(0);
        EXPECT_FALSE(in_process(kNimbaLibrary));
        EXPECT_EQ(query(), kUnwrittenInfo);
        EXPECT_EQ(take_called(), Texts{});
        empty_search_directory();
    }
}

TEST_F(Bandwidth, WritesNothingAfterExitWhenAnyOtherLibraryOfTheProcessTells)
{
    install_stub("hwinfo_IDEG_idg", "unrelated.so");
    const HeldLibrary unrelated{"unrelated.so", RTLD_GLOBAL};
    for (const char* stub : {"hwinfo_IDE_", "hwinfo_IDG_"}) {
        choose(stub, DEVICE_ID_NIMBA_K1);
        exit(0);
        std::filesystem::remove(search_directory() / kNimbaLibrary);
        EXPECT_EQ(query(), kUnwrittenInfo);
        EXPECT_EQ(take_called(), Texts{});
    }
}

TEST_F(Bandwidth, WritesNothingWhenAnotherLibraryTookThePlace)
{
    choose("hwinfo_IDE_", DEVICE_ID_NIMBA_K1);
    ASSERT_EQ(start("hwinfo__", DEVICE_ID_QV_M20), DEVICE_ID_QV_M20);
    EXPECT_EQ(query(), kUnwrittenInfo);
    EXPECT_EQ(take_called(), Texts{});
    EXPECT_EQ(call("bandwidth_init"), -1);
    EXPECT_EQ(query(), kUnwrittenInfo);
}

TEST_F(Bandwidth, IsOfTheLibraryOfTheLastChoice)
{
    choose("hwinfo_IDEG_idg", DEVICE_ID_NIMBA_K1);
    choose("hwinfo__idg", DEVICE_ID_QV_M40);
    answers_["qv_get_hwinfo"] = kInfo;
    EXPECT_EQ(query(), kInfo);
    EXPECT_EQ(take_called(), Texts{"qv_get_hwinfo"});
}

}  // namespace
}  // namespace nimba::test
