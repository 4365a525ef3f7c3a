// SPDX-License-Identifier: MIT
// Frame rates from the kernel-interface library, and the choice of what counts frames.
#include "frame_rate_fixture.hpp"
#include "kernel_counters_fixture.hpp"

#include <dlfcn.h>

#include <limits>

namespace nimba::test {
namespace {

constexpr std::int64_t kSecond = 1000000000;

class FrameRate : public KernelCountersTest {
  protected:
    std::int32_t in_library() const { return global<std::int32_t>("use_IOCTL_get_fps"); }

    // What the library counts from now on.
    void sample(std::int64_t time, std::int64_t flips)
    {
        Words& words = answers_["gfx_flip_count"];
        words.resize(4);
        std::memcpy(words.data(), &time, sizeof time);
        std::memcpy(words.data() + 2, &flips, sizeof flips);
    }
    // What the nodes of the current adapter count from now on.
    void nodes(const char* flips_and_time, const char* blits) const
    {
        info_directories_[0].write("fps_count", flips_and_time);
        info_directories_[0].write("rxa_blt_scn_cnt", blits);
    }
    // Starts with a library that counts, and takes the first sample.
    void first(std::int64_t time, std::int64_t flips)
    {
        if (!in_process(kNimbaLibrary)) {
            ASSERT_EQ(start("flips_gfx_size"), DEVICE_ID_NIMBA_K1);
        }
        sample(time, flips);
        EXPECT_EQ(call("fps_init"), 0);
        EXPECT_EQ(in_library(), 1);
    }
    // The rates over a record that is unwritten before; fills status_.
    RateBits next()
    {
        info_ = no_rates();
        status_ = global<decltype(get_fps_info)>("get_fps_info")(&info_);
        return bits_of(info_);
    }
    RateBits next(std::int64_t time, std::int64_t flips)
    {
        sample(time, flips);
        return next();
    }

    FpsInfo info_{};
    std::int32_t status_ = 42;
};

TEST_F(FrameRate, IsOfNodesAtLoadAndSinceZero)
{
    EXPECT_EQ(in_library(), 0);
    ASSERT_EQ(start("flips_gfx_size"), DEVICE_ID_NIMBA_K1);
    EXPECT_EQ(in_library(), 0);
    nodes("64 1000000000\n", "12\n");
    EXPECT_EQ(next(), rates(64.0F, 12.0F, 76.0F, 76.0F));
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(take_called(), Texts{});
}

TEST_F(FrameRate, OfNoAdapterIsNone)
{
    EXPECT_EQ(call("fps_init"), 0);
    EXPECT_EQ(in_library(), 0);
    EXPECT_EQ(next(), kNoRates);
    EXPECT_EQ(status_, -1);
}

TEST_F(FrameRate, IsOfALibraryThatCountsAndHasTheNewerSize)
{
    for (const char* stub : {"flips_gfx_size", "flips_both_sizes"}) {
        ASSERT_EQ(start(stub), DEVICE_ID_NIMBA_K1);
        EXPECT_EQ(call("fps_init"), 0);
        EXPECT_EQ(in_library(), 1) << stub;
        EXPECT_EQ(take_called(), Texts{"gfx_flip_count"});
        exit(0);
        empty_search_directory();
    }
}

TEST_F(FrameRate, IsOfNodesWithAnyOtherLibrary)
{
    // The first counts and has the older size alone; the others do not count.
    for (const char* stub : {"flips_qv_size", "hwinfo__", "busy_UQX"}) {
        global<std::int32_t>("use_IOCTL_get_fps") = 1;
        ASSERT_EQ(start(stub), DEVICE_ID_NIMBA_K1);
        nodes("100 5000000000\n", "10\n");
        EXPECT_EQ(call("fps_init"), 0);
        EXPECT_EQ(in_library(), 0) << stub;
        nodes("164 6000000000\n", "13\n");
        EXPECT_EQ(next(), rates(64.0F, 3.0F, 67.0F, 67.0F));
        EXPECT_EQ(take_called(), Texts{});
        exit(0);
        empty_search_directory();
    }
}

TEST_F(FrameRate, IsOfNodesAgainWhenTheNextLibraryDoesNotCount)
{
    first(kSecond, 100);
    ASSERT_EQ(start("flips_qv_size", DEVICE_ID_QV_M20), DEVICE_ID_QV_M20);
    nodes("7 5000000000\n", "10\n");
    EXPECT_EQ(call("fps_init"), 0);
    EXPECT_EQ(in_library(), 0);
    nodes("71 6000000000\n", "10\n");
    EXPECT_EQ(next(), rates(64.0F, 0.0F, 64.0F, 64.0F));
    EXPECT_EQ(take_called(), Texts{});
}

TEST_F(FrameRate, IsOfNodesAfterExit)
{
    first(kSecond, 100);
    exit(0);
    nodes("7 5000000000\n", "10\n");
    EXPECT_EQ(call("fps_init"), 0);
    EXPECT_EQ(in_library(), 0);
    nodes("71 6000000000\n", "10\n");
    EXPECT_EQ(next(), rates(64.0F, 0.0F, 64.0F, 64.0F));
}

TEST_F(FrameRate, OfALibraryThatHasGoneIsNotWritten)
{
    first(kSecond, 100);
    exit(0);
    EXPECT_FALSE(in_process(kNimbaLibrary));
    take_calls();
    EXPECT_EQ(next(2 * kSecond, 160), kNoRates);
    EXPECT_EQ(take_called(), Texts{});
}

TEST_F(FrameRate, IsCountedForTheCurrentDeviceAndItsBlock)
{
    first(kSecond, 100);
    next(2 * kSecond, 160);
    const auto calls = take_calls();
    ASSERT_EQ(calls.size(), 2U);
    for (const CounterCall& call : calls) {
        EXPECT_EQ(call.function, "gfx_flip_count");
        EXPECT_EQ(call.drm_fd, kDrmFd);
        EXPECT_NE(call.block, nullptr);
        EXPECT_EQ(call.block, block());
        EXPECT_NE(call.record, nullptr);
    }
}

TEST_F(FrameRate, OfALibraryHasNoBlits)
{
    first(0, 0);
    nodes("1 2\n", "3\n");
    EXPECT_EQ(next(kSecond, 60), flip_rates(60.0F, 60.0F));
    EXPECT_EQ(status_, 0);
    first(5 * kSecond, 100);
    EXPECT_EQ(next(7 * kSecond, 388), flip_rates(144.0F, 144.0F));
    EXPECT_EQ(take_messages(), Texts{});
}

TEST_F(FrameRate, OfALibraryIsSinceTheCallBeforeAndOnAverageSinceTheFirst)
{
    first(kSecond, 7);
    EXPECT_EQ(next(2 * kSecond, 100), flip_rates(93.0F, 93.0F));
    EXPECT_EQ(next(3 * kSecond, 133), flip_rates(33.0F, 63.0F));
}

TEST_F(FrameRate, OfALibraryStaysUnwrittenUntilATimeIsNew)
{
    first(kSecond, 7);
    EXPECT_EQ(next(kSecond, 9), kNoRates);
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(next(2 * kSecond, 100), flip_rates(93.0F, 93.0F));
    EXPECT_EQ(next(2 * kSecond, 120), kNoRates);
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(next(3 * kSecond, 133), flip_rates(33.0F, 63.0F));
    EXPECT_EQ(status_, 0);
}

TEST_F(FrameRate, OfALibraryTakesDifferencesOfCountsExactly)
{
    first(0, 9007199254740993);
    EXPECT_EQ(next(kSecond, 9007199254740996), flip_rates(3.0F, 3.0F));
    first(0, 16777216);
    EXPECT_EQ(next(kSecond, 16777219), flip_rates(3.0F, 3.0F));
}

TEST_F(FrameRate, OfALibraryTakesCountsAndTimesForUnsigned)
{
    first(0, 0);
    EXPECT_EQ(next(kSecond, std::numeric_limits<std::int64_t>::min()),
              flip_rates(0x1p63F, 0x1p63F));
    first(0, 10);
    EXPECT_EQ(next(kSecond, 5), flip_rates(0x1p64F, 0x1p64F));
    first(0, 0);
    EXPECT_EQ(next(-4611686018427387904, 60), flip_rates(0x1.2a05f2p-28F, 0x1.2a05f2p-28F));
}

TEST_F(FrameRate, OfALibraryRoundsTimesBeforeTheirDifference)
{
    first(16777217, 0);
    EXPECT_EQ(next(33554435, 1), flip_rates(0x1.dcd648p5F, 0x1.dcd648p5F));
    first(259200 * kSecond, 0);
    EXPECT_EQ(next(259201 * kSecond, 60), flip_rates(0x1.dcd65p5F, 0x1.dcd65p5F));
}

TEST_F(FrameRate, OfALibraryIsInfiniteOrNoNumberWhenTimesRoundAlike)
{
    first(1700000000000000000, 0);
    EXPECT_EQ(next(1700000000016666667, 1), flip_rates(std::numeric_limits<float>::infinity(),
                                                       std::numeric_limits<float>::infinity()));
    EXPECT_EQ(status_, 0);
    next(1700000000016666668, 1);
    EXPECT_EQ(status_, 0);
    EXPECT_TRUE(std::isnan(info_.flips));
}

TEST_F(FrameRate, DoesNotDependOnWhatTheFunctionReturns)
{
    results_["gfx_flip_count"] = -1;
    first(0, 0);
    EXPECT_EQ(next(kSecond, 64), flip_rates(64.0F, 64.0F));
}

TEST_F(FrameRate, IsOfNodesWhenAnyOtherLibraryOfTheProcessCounts)
{
    install_stub("flips_gfx_size", "unrelated.so");
    const HeldLibrary unrelated{"unrelated.so", RTLD_GLOBAL};
    EXPECT_EQ(call("fps_init"), 0);
    EXPECT_EQ(in_library(), 0);
    EXPECT_EQ(take_called(), Texts{});
}

TEST_F(FrameRate, IsOfALibraryThatToldNoSizeOfABlockToo)
{
    results_["gfx_get_struct_size"] = 0;
    ASSERT_EQ(start("flips_gfx_size"), -1);
    ASSERT_EQ(block(), nullptr);
    EXPECT_EQ(call("fps_init"), 0);
    EXPECT_EQ(in_library(), 1);
    const auto calls = take_calls();
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_EQ(calls[0].block, nullptr);
}

}  // namespace
}  // namespace nimba::test
