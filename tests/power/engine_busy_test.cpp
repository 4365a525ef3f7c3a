// SPDX-License-Identifier: MIT
// How busy the engines are, from the kernel-interface library.
#include "kernel_counters_fixture.hpp"

#include <dlfcn.h>

#include <initializer_list>
#include <ostream>
#include <utility>

namespace nimba::test {
namespace {

constexpr const char* kUsesQueue = "gfxbusy_init  use GFXBUSY_VERION_0.\n ";
constexpr const char* kUsesUsage = "gfxbusy_init  use GFXBUSY_VERION_1.\n ";
constexpr const char* kUsesExtended = "gfxbusy_init  use GFXBUSY_VERION_EXT_1.\n ";
constexpr const char* kNoFunctions = "gfx_xxx interface functions init fail. \n ";

const Words kUnwrittenBusy(10, kUnwritten);
const Words kExtendedInfo{200, 201, 202, 203, 204, 205, 206, 207, 208, 209, 210, 211, 212};

// The ten words of a caller's record: these, and the others unwritten.
Words written(std::initializer_list<std::pair<std::size_t, std::uint32_t>> values)
{
    Words words = kUnwrittenBusy;
    for (const auto& [word, value] : values) {
        words[word] = value;
    }
    return words;
}

class EngineBusy : public KernelCountersTest {
  protected:
    std::int32_t& version() const { return global<std::int32_t>("gfxbusy_apiversion"); }

    // Starts with the stub and chooses its function.
    void choose(const char* stub, std::uint32_t chip = DEVICE_ID_NIMBA_K1)
    {
        ASSERT_EQ(start(stub, chip), static_cast<std::int32_t>(chip));
        ASSERT_EQ(call("gfxbusy_init"), 0);
    }
    // Queries over a record that is unwritten before; the result is always 0.
    Words query()
    {
        info_ = unwritten_record<GpuBusyInfo>();
        EXPECT_EQ(global<decltype(get_gpubusy_info)>("get_gpubusy_info")(&info_), 0);
        return {info_.words, info_.words + 10};
    }

    GpuBusyInfo info_{};
};

// A stub is named by its functions: U tells usage, X does in the extended form, Q tells of queues.
struct BusyChoice {
    const char* stub;
    std::int32_t version;
    Texts messages;
    const char* function;
};

void PrintTo(const BusyChoice& choice, std::ostream* out)
{
    *out << choice.stub;
}

class EngineBusyChoice : public EngineBusy, public testing::WithParamInterface<BusyChoice> {};

TEST_P(EngineBusyChoice, IsToldByTheVersionAndAMessage)
{
    const BusyChoice& choice = GetParam();
    ASSERT_EQ(start(choice.stub), DEVICE_ID_NIMBA_K1);
    EXPECT_EQ(call("gfxbusy_init"), 0);
    EXPECT_EQ(version(), choice.version);
    EXPECT_EQ(take_messages(), choice.messages);
    EXPECT_EQ(take_called(), Texts{});
    query();
    EXPECT_EQ(take_called(), Texts{choice.function});
    EXPECT_EQ(take_messages(), Texts{});
}

INSTANTIATE_TEST_SUITE_P(
    EngineBusy, EngineBusyChoice,
    testing::Values(
        BusyChoice{"busy_U", 2, {kUsesUsage}, "gfx_get_usage_info"},
        BusyChoice{"busy_UQ", 2, {kUsesUsage}, "gfx_get_usage_info"},
        BusyChoice{"busy_Q", 1, {kUsesQueue}, "qvGetHwqInfo"},
        BusyChoice{"busy_UX", 3, {kUsesUsage, kUsesExtended}, "gfx_get_usage_info_ext"},
        BusyChoice{"busy_UQX", 3, {kUsesUsage, kUsesExtended}, "gfx_get_usage_info_ext"},
        BusyChoice{"busy_QX", 3, {kUsesQueue, kUsesExtended}, "gfx_get_usage_info_ext"}));

TEST_F(EngineBusy, HasVersionTwoAtLoad)
{
    EXPECT_EQ(version(), 2);
}

TEST_F(EngineBusy, FailsWithoutUsageAndQueues)
{
    for (const char* stub : {"busy_", "busy_X"}) {
        ASSERT_EQ(start(stub), DEVICE_ID_NIMBA_K1);
        EXPECT_EQ(call("gfxbusy_init"), -1) << stub;
        EXPECT_EQ(take_messages(), Texts{kNoFunctions});
        EXPECT_EQ(version(), 2);
        EXPECT_EQ(query(), kUnwrittenBusy);
        EXPECT_EQ(take_called(), Texts{});
        exit(0);
        empty_search_directory();
    }
}

TEST_F(EngineBusy, FailsWithoutALibrary)
{
    EXPECT_EQ(call("gfxbusy_init"), -1);
    EXPECT_EQ(take_messages(), Texts{kNoFunctions});
    EXPECT_EQ(version(), 2);
    EXPECT_EQ(query(), kUnwrittenBusy);
}

TEST_F(EngineBusy, IsNotToldByAnyOtherLibraryOfTheProcess)
{
    install_stub("busy_UQX", "unrelated.so");
    const HeldLibrary unrelated{"unrelated.so", RTLD_GLOBAL};
    EXPECT_EQ(call("gfxbusy_init"), -1);
    EXPECT_EQ(query(), kUnwrittenBusy);
    EXPECT_EQ(take_called(), Texts{});
}

TEST_F(EngineBusy, KeepsItsVersionWhenALaterInitFails)
{
    choose("busy_Q");
    ASSERT_EQ(start("busy_", DEVICE_ID_QV_M20), DEVICE_ID_QV_M20);
    EXPECT_EQ(call("gfxbusy_init"), -1);
    EXPECT_EQ(take_messages(), Texts{kNoFunctions});
    EXPECT_EQ(version(), 1);
    EXPECT_EQ(query(), kUnwrittenBusy);
    EXPECT_EQ(take_called(), Texts{});
}

TEST_F(EngineBusy, GetsTheVersionOfTheLastInit)
{
    choose("busy_UX");
    EXPECT_EQ(version(), 3);
    choose("busy_Q", DEVICE_ID_QV_M20);
    EXPECT_EQ(version(), 1);
    answers_["qvGetHwqInfo"] = {5, 6, 7};
    EXPECT_EQ(query(), written({{2, 5}, {4, 6}, {7, 7}}));
    choose("busy_U", DEVICE_ID_QV_M40);
    EXPECT_EQ(version(), 2);
}

TEST_F(EngineBusy, OfTheExtendedUsageHasThreeLastWordsOnOneChip)
{
    choose("busy_UX", DEVICE_ID_QV_M40);
    answers_["gfx_get_usage_info_ext"] = kExtendedInfo;
    EXPECT_EQ(query(), written({{2, 202}, {4, 204}, {5, 205}, {7, 207}, {8, 208}, {9, 209}}));
}

TEST_F(EngineBusy, OfTheExtendedUsageHasItsFourthWordLastOnOtherChips)
{
    for (const std::uint32_t chip :
         Words{DEVICE_ID_NIMBA_K1, DEVICE_ID_NIMBA_K2, DEVICE_ID_NIMBA_K3, DEVICE_ID_NIMBA_K3T,
               DEVICE_ID_NIMBA_K5, DEVICE_ID_NIMBA_K6, DEVICE_ID_QV_M20, DEVICE_ID_QV_M30}) {
        choose("busy_UX", chip);
        answers_["gfx_get_usage_info_ext"] = kExtendedInfo;
        EXPECT_EQ(query(), written({{2, 202}, {4, 204}, {5, 205}, {7, 203}})) << chip;
        exit(0);
        empty_search_directory();
    }
}

TEST_F(EngineBusy, OfTheExtendedUsageComesThroughARecordThatTellsItsVersion)
{
    choose("busy_UX");
    answers_["gfx_get_usage_info_ext"] = kExtendedInfo;
    query();
    answers_["gfx_get_usage_info_ext"] = {};
    EXPECT_EQ(query(), written({{2, 0}, {4, 0}, {5, 0}, {7, 0}}));
    const auto calls = take_calls();
    ASSERT_EQ(calls.size(), 2U);
    for (const CounterCall& call : calls) {
        EXPECT_EQ(call.function, "gfx_get_usage_info_ext");
        EXPECT_EQ(call.drm_fd, kDrmFd);
        EXPECT_NE(call.block, nullptr);
        EXPECT_EQ(call.block, block());
        EXPECT_EQ(call.words, (Words{3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    }
}

TEST_F(EngineBusy, OfTheUsageIsThreeWords)
{
    for (const std::uint32_t chip :
         Words{DEVICE_ID_NIMBA_K1, DEVICE_ID_QV_M20, DEVICE_ID_QV_M30, DEVICE_ID_QV_M40}) {
        choose("busy_UQ", chip);
        answers_["gfx_get_usage_info"] = {11, 12, 13};
        EXPECT_EQ(query(), written({{2, 11}, {4, 12}, {7, 13}})) << chip;
        answers_["gfx_get_usage_info"] = {};
        EXPECT_EQ(query(), written({{2, 0}, {4, 0}, {7, 0}}));
        const auto calls = take_calls();
        ASSERT_EQ(calls.size(), 2U);
        for (const CounterCall& call : calls) {
            EXPECT_EQ(call.function, "gfx_get_usage_info");
            EXPECT_EQ(call.drm_fd, kDrmFd);
            EXPECT_NE(call.block, nullptr);
            EXPECT_EQ(call.block, block());
            EXPECT_NE(call.record, nullptr);
            EXPECT_EQ(call.words, (Words{0, 0, 0}));
        }
        exit(0);
        empty_search_directory();
    }
}

TEST_F(EngineBusy, OfQueuesIsThreeWordsAndNeedsNoBlock)
{
    for (const std::uint32_t chip :
         Words{DEVICE_ID_NIMBA_K1, DEVICE_ID_QV_M20, DEVICE_ID_QV_M30, DEVICE_ID_QV_M40}) {
        choose("busy_Q", chip);
        answers_["qvGetHwqInfo"] = {21, 22, 23};
        EXPECT_EQ(query(), written({{2, 21}, {4, 22}, {7, 23}})) << chip;
        answers_["qvGetHwqInfo"] = {};
        EXPECT_EQ(query(), written({{2, 0}, {4, 0}, {7, 0}}));
        const auto calls = take_calls();
        ASSERT_EQ(calls.size(), 2U);
        for (const CounterCall& call : calls) {
            EXPECT_EQ(call.function, "qvGetHwqInfo");
            EXPECT_EQ(call.drm_fd, kDrmFd);
            EXPECT_NE(call.record, nullptr);
            EXPECT_NE(call.record, block());
            EXPECT_EQ(call.words, (Words{0, 0, 0}));
        }
        exit(0);
        empty_search_directory();
    }
}

TEST_F(EngineBusy, DoesNotDependOnWhatTheFunctionReturns)
{
    choose("busy_U");
    answers_["gfx_get_usage_info"] = {11, 12, 13};
    results_["gfx_get_usage_info"] = -1;
    EXPECT_EQ(query(), written({{2, 11}, {4, 12}, {7, 13}}));
}

TEST_F(EngineBusy, OfAnyOtherVersionIsNothing)
{
    choose("busy_UQX");
    take_messages();
    for (const std::int32_t other : {0, 4, -1, 2147483647}) {
        version() = other;
        EXPECT_EQ(query(), kUnwrittenBusy) << other;
    }
    EXPECT_EQ(take_called(), Texts{});
    EXPECT_EQ(take_messages(), Texts{});
}

TEST_F(EngineBusy, TakesTheVersionThatTheHostSets)
{
    choose("busy_UQX");
    answers_["gfx_get_usage_info"] = {11, 12, 13};
    version() = 2;
    EXPECT_EQ(query(), written({{2, 11}, {4, 12}, {7, 13}}));
    EXPECT_EQ(take_called(), Texts{"gfx_get_usage_info"});
}

TEST_F(EngineBusy, OfAVersionWithoutItsFunctionIsNothing)
{
    choose("busy_QX");
    version() = 2;
    EXPECT_EQ(query(), kUnwrittenBusy);
    exit(0);
    empty_search_directory();
    choose("busy_U");
    for (const std::int32_t other : {1, 3}) {
        version() = other;
        EXPECT_EQ(query(), kUnwrittenBusy) << other;
    }
    EXPECT_EQ(take_called(), Texts{});
}

TEST_F(EngineBusy, WritesNothingBeforeAnInit)
{
    EXPECT_EQ(query(), kUnwrittenBusy);
    ASSERT_EQ(start("busy_UQX"), DEVICE_ID_NIMBA_K1);
    EXPECT_EQ(query(), kUnwrittenBusy);
    EXPECT_EQ(take_called(), Texts{});
}

TEST_F(EngineBusy, WritesNothingAfterExit)
{
    for (const char* stub : {"busy_U", "busy_Q", "busy_UX"}) {
        choose(stub);
        exit(0);
        EXPECT_FALSE(in_process(kNimbaLibrary));
        EXPECT_EQ(query(), kUnwrittenBusy) << stub;
        EXPECT_EQ(take_called(), Texts{});
        empty_search_directory();
    }
}

TEST_F(EngineBusy, WritesNothingWhenAnotherLibraryTookThePlace)
{
    choose("busy_UX");
    ASSERT_EQ(start("busy_", DEVICE_ID_QV_M20), DEVICE_ID_QV_M20);
    EXPECT_EQ(query(), kUnwrittenBusy);
    EXPECT_EQ(take_called(), Texts{});
}

TEST_F(EngineBusy, WritesNothingAfterALaterInitFailed)
{
    choose("busy_UX");
    ASSERT_EQ(start("busy_X", DEVICE_ID_QV_M20), DEVICE_ID_QV_M20);
    EXPECT_EQ(call("gfxbusy_init"), -1);
    EXPECT_EQ(version(), 3);
    EXPECT_EQ(query(), kUnwrittenBusy);
    EXPECT_EQ(take_called(), Texts{});
}

}  // namespace
}  // namespace nimba::test
