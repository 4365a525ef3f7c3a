// SPDX-License-Identifier: MIT
// Frame rate, hardware information and engine use, on machines whose kernel-interface libraries
// have one set each of the functions that the library looks for. All of their adapters draw 1000
// frames and 500 blits a second, and have hardware words 100 to 111 and usage words 2 to 9 of 12 to
// 19.
#include "machine_fixture.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <thread>

namespace nimba::test {
namespace {

constexpr std::uint32_t kLeft = 0xEEEEEEEE;  // a word that is not written

constexpr const char* kNoFunctions = "gfx_xxx interface functions init fail. \n ";
constexpr const char* kInitFails = "gfx_init_hwinfo fail. \n ";
constexpr const char* kUsage = "gfxbusy_init  use GFXBUSY_VERION_1.\n ";
constexpr const char* kExtendedUsage = "gfxbusy_init  use GFXBUSY_VERION_EXT_1.\n ";
constexpr const char* kQueues = "gfxbusy_init  use GFXBUSY_VERION_0.\n ";

using HardwareWords = std::array<std::uint32_t, 12>;
using BusyWords = std::array<std::uint32_t, 10>;

constexpr HardwareWords kPlain{100, 101, 102, 103, 104, 105, 106, 107, 108, 109, 110, 111};
// A library tells extended information with 1 more in the last word.
constexpr HardwareWords kExtended{100, 101, 102, 103, 104, 105, 106, 107, 108, 109, 110, 112};
constexpr HardwareWords kOfM20{100,   101,   102, 103, kLeft, kLeft,
                               kLeft, kLeft, 105, 106, kLeft, kLeft};
constexpr HardwareWords kNoHardware{kLeft, kLeft, kLeft, kLeft, kLeft, kLeft,
                                    kLeft, kLeft, kLeft, kLeft, kLeft, kLeft};

constexpr BusyWords kFirstWords{kLeft, kLeft, 12, kLeft, 14, kLeft, kLeft, 17, kLeft, kLeft};
constexpr BusyWords kExtendedWords{kLeft, kLeft, 12, kLeft, 14, 15, kLeft, 13, kLeft, kLeft};
constexpr BusyWords kWordsOfM40{kLeft, kLeft, 12, kLeft, 14, 15, kLeft, 17, 18, 19};
constexpr BusyWords kNoBusy{kLeft, kLeft, kLeft, kLeft, kLeft, kLeft, kLeft, kLeft, kLeft, kLeft};

struct Expected {
    bool library_counts_frames;
    const char* bandwidth_message;  // null: bandwidth_init succeeds
    HardwareWords hardware;
    Texts busy_messages;
    std::int32_t busy_version;  // 0: gfxbusy_init fails and leaves the version
    BusyWords busy;
};

class Counters : public MachineTest, public testing::WithParamInterface<Expected> {
  protected:
    Counters()
    {
        discover();
        EXPECT_GT(init(0), 0);
        take_messages();
    }
    ~Counters() override { exit(0); }

    std::int32_t call(const char* name) const { return library_.symbol<std::int32_t()>(name)(); }

    std::uint32_t flips() const
    {
        auto& get = library_.symbol<decltype(gpuinfo_get_fps_count)>("gpuinfo_get_fps_count");
        std::uint32_t count = 0;
        std::int64_t time = 0;
        std::int64_t blits = 0;
        EXPECT_EQ(get(&count, &time, &blits), 1);
        return count;
    }

    void wait_for_flips(std::uint32_t wanted) const
    {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds{30};
        while (flips() < wanted && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(std::chrono::milliseconds{10});
        }
    }
};

TEST_P(Counters, FrameRatesAreThoseOfTheDriver)
{
    if (!drivers_are_live()) {
        GTEST_SKIP() << "needs live drivers";
    }
    auto& get = library_.symbol<decltype(get_fps_info)>("get_fps_info");
    EXPECT_EQ(call("fps_init"), 0);
    EXPECT_EQ(library_.symbol<std::int32_t>("use_IOCTL_get_fps"),
              GetParam().library_counts_frames ? 1 : 0);
    wait_for_flips(flips() + 500);
    FpsInfo info{-1.0F, -1.0F, -1.0F, -1.0F};
    EXPECT_EQ(get(&info), 0);
    EXPECT_NEAR(info.flips, 1000.0F, 20.0F);
    if (GetParam().library_counts_frames) {
        EXPECT_EQ(info.blits, -1.0F);
        EXPECT_EQ(info.flips_blits, -1.0F);
        EXPECT_NEAR(info.average_since, 1000.0F, 20.0F);
    } else {
        EXPECT_NEAR(info.blits, 500.0F, 20.0F);
        EXPECT_NEAR(info.flips_blits, 1500.0F, 40.0F);
        EXPECT_NEAR(info.average_since, 1500.0F, 40.0F);
    }
}

TEST_P(Counters, HardwareInformationComesFromTheFunctionsThatThereAre)
{
    auto& get = library_.symbol<decltype(get_bandwidth_info)>("get_bandwidth_info");
    const char* const message = GetParam().bandwidth_message;
    EXPECT_EQ(call("bandwidth_init"), message == nullptr ? 0 : -1);
    EXPECT_EQ(take_messages(), message == nullptr ? Texts{} : Texts{message});
    HardwareWords words = kNoHardware;
    EXPECT_EQ(get(reinterpret_cast<BandwidthInfo*>(words.data())), 0);
    EXPECT_EQ(words, GetParam().hardware);
}

TEST_P(Counters, EngineUseComesFromTheFunctionsThatThereAre)
{
    if (!drivers_are_live()) {
        GTEST_SKIP() << "needs live drivers";
    }
    auto& get = library_.symbol<decltype(get_gpubusy_info)>("get_gpubusy_info");
    const std::int32_t version = GetParam().busy_version;
    EXPECT_EQ(call("gfxbusy_init"), version == 0 ? -1 : 0);
    EXPECT_EQ(take_messages(), GetParam().busy_messages);
    EXPECT_EQ(library_.symbol<std::int32_t>("gfxbusy_apiversion"), version == 0 ? 2 : version);
    BusyWords words = kNoBusy;
    EXPECT_EQ(get(reinterpret_cast<GpuBusyInfo*>(words.data())), 0);
    EXPECT_EQ(words, GetParam().busy);
}

TEST_P(Counters, NothingIsToldOnceTheLibraryIsClosed)
{
    call("fps_init");
    call("bandwidth_init");
    call("gfxbusy_init");
    exit(0);
    HardwareWords hardware = kNoHardware;
    BusyWords busy = kNoBusy;
    auto& get_hardware = library_.symbol<decltype(get_bandwidth_info)>("get_bandwidth_info");
    auto& get_busy = library_.symbol<decltype(get_gpubusy_info)>("get_gpubusy_info");
    EXPECT_EQ(get_hardware(reinterpret_cast<BandwidthInfo*>(hardware.data())), 0);
    EXPECT_EQ(hardware, kNoHardware);
    EXPECT_EQ(get_busy(reinterpret_cast<GpuBusyInfo*>(busy.data())), 0);
    EXPECT_EQ(busy, kNoBusy);
    if (GetParam().library_counts_frames) {
        FpsInfo info{};
        EXPECT_EQ(library_.symbol<decltype(get_fps_info)>("get_fps_info")(&info), -1);
    }
}

// One for each machine, called as it is.
#define NIMBA_COUNTERS(machine, ...) \
    INSTANTIATE_TEST_SUITE_P(machine, Counters, testing::Values(Expected{__VA_ARGS__}))

NIMBA_COUNTERS(none, false, kNoFunctions, kNoHardware, {kNoFunctions}, 0, kNoBusy);
NIMBA_COUNTERS(gfx, true, nullptr, kPlain, {kUsage}, 2, kFirstWords);
NIMBA_COUNTERS(gfx_ext, true, nullptr, kExtended, {kUsage, kExtendedUsage}, 3, kExtendedWords);
NIMBA_COUNTERS(gfx_ext_only, true, nullptr, kExtended, {kNoFunctions}, 0, kNoBusy);
NIMBA_COUNTERS(gfx_init_fails, true, kInitFails, kNoHardware, {kUsage, kExtendedUsage}, 3,
               kExtendedWords);
NIMBA_COUNTERS(gfx_no_deinit, true, kNoFunctions, kNoHardware, {kUsage}, 2, kFirstWords);
NIMBA_COUNTERS(gfx_no_get, true, kNoFunctions, kNoHardware, {kUsage}, 2, kFirstWords);
NIMBA_COUNTERS(gfx_no_init, true, kNoFunctions, kNoHardware, {kUsage}, 2, kFirstWords);
NIMBA_COUNTERS(gfx_of_qv_size, false, nullptr, kExtended, {kUsage, kExtendedUsage}, 3,
               kExtendedWords);
NIMBA_COUNTERS(both, true, nullptr, kPlain, {kUsage}, 2, kFirstWords);
NIMBA_COUNTERS(both_no_gfx_deinit, true, nullptr, kPlain, {kUsage}, 2, kFirstWords);
NIMBA_COUNTERS(both_no_gfx_get, true, nullptr, kPlain, {kUsage}, 2, kFirstWords);
NIMBA_COUNTERS(both_no_gfx_init, true, nullptr, kExtended, {kUsage}, 2, kFirstWords);
NIMBA_COUNTERS(both_one_get, true, kNoFunctions, kNoHardware, {kUsage}, 2, kFirstWords);
NIMBA_COUNTERS(qv, false, nullptr, kOfM20, {kQueues}, 1, kFirstWords);
NIMBA_COUNTERS(qv_ext, false, nullptr, kExtended, {kQueues, kExtendedUsage}, 3, kWordsOfM40);
NIMBA_COUNTERS(qv_ext_only, false, nullptr, kExtended, {kQueues, kExtendedUsage}, 3,
               kExtendedWords);
NIMBA_COUNTERS(qv_init_fails, false, kInitFails, kNoHardware, {kQueues}, 1, kFirstWords);
NIMBA_COUNTERS(qv_no_deinit, false, kNoFunctions, kNoHardware, {kQueues}, 1, kFirstWords);
NIMBA_COUNTERS(qv_no_get, false, kNoFunctions, kNoHardware, {kQueues}, 1, kFirstWords);
NIMBA_COUNTERS(qv_no_init, false, kNoFunctions, kNoHardware, {kQueues}, 1, kFirstWords);

}  // namespace
}  // namespace nimba::test
