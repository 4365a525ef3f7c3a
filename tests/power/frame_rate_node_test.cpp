// SPDX-License-Identifier: MIT
// Frame rates from the driver's counts of frames.
#include "adapter_nodes.hpp"
#include "frame_rate_fixture.hpp"
#include "support/captured_stdout.hpp"

#include <cstdint>
#include <filesystem>
#include <string>

namespace nimba::test {
namespace {

class FrameCount : public AdapterNodesTest {
  protected:
    std::int32_t read() { return gpuinfo_get_fps_count(&flips_, &time_, &blits_); }

    std::uint32_t flips_ = 71;
    std::int64_t time_ = 72;
    std::int64_t blits_ = 73;
};

TEST_F(FrameCount, IsReadFromTwoNodes)
{
    info("fps_count", "4294967295 1700000000000000000\n");
    info("rxa_blt_scn_cnt", "9223372036854775807\n");
    EXPECT_EQ(read(), 1);
    EXPECT_EQ(flips_, 4294967295U);
    EXPECT_EQ(time_, 1700000000000000000);
    EXPECT_EQ(blits_, 9223372036854775807);
}

TEST_F(FrameCount, MayHaveNegativeTimesAndBlits)
{
    info("fps_count", "5\n-7\n");
    info("rxa_blt_scn_cnt", " -9 \n");
    EXPECT_EQ(read(), 1);
    EXPECT_EQ(flips_, 5U);
    EXPECT_EQ(time_, -7);
    EXPECT_EQ(blits_, -9);
}

TEST_F(FrameCount, IsCutToThirtyTwoBits)
{
    info("fps_count", "4294967301 1\n");
    info("rxa_blt_scn_cnt", "1\n");
    EXPECT_EQ(read(), 1);
    EXPECT_EQ(flips_, 5U);
}

TEST_F(FrameCount, OfAMissingNodeStays)
{
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(flips_, 71U);
    EXPECT_EQ(time_, 72);
    EXPECT_EQ(blits_, 73);
    info("fps_count", "5 7\n");
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(flips_, 5U);
    EXPECT_EQ(time_, 7);
    EXPECT_EQ(blits_, 73);
}

TEST_F(FrameCount, OfBlitsDoesNotNeedThatOfFlips)
{
    info("rxa_blt_scn_cnt", "9\n");
    EXPECT_EQ(read(), 1);
    EXPECT_EQ(flips_, 71U);
    EXPECT_EQ(time_, 72);
    EXPECT_EQ(blits_, 9);
}

TEST_F(FrameCount, OfAnEmptyNodeOrOneWithoutANumberStays)
{
    info("fps_count", "");
    info("rxa_blt_scn_cnt", "");
    EXPECT_EQ(read(), -1);
    EXPECT_EQ(flips_, 71U);
    EXPECT_EQ(time_, 72);
    EXPECT_EQ(blits_, 73);
    info("fps_count", "none 7\n");
    info("rxa_blt_scn_cnt", "none\n");
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(flips_, 71U);
    EXPECT_EQ(time_, 72);
    EXPECT_EQ(blits_, 73);
    info("fps_count", "5 none\n");
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(flips_, 5U);
    EXPECT_EQ(time_, 72);
}

TEST_F(FrameCount, OfNoAdapterStays)
{
    pCurrent_gpu_infos = nullptr;
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(flips_, 71U);
    EXPECT_EQ(time_, 72);
    EXPECT_EQ(blits_, 73);
}

TEST_F(FrameCount, LeavesNoDescriptorOpen)
{
    info("fps_count", "5 7\n");
    info("rxa_blt_scn_cnt", "9\n");
    const auto before = open_descriptors();
    EXPECT_EQ(read(), 1);
    EXPECT_EQ(open_descriptors(), before);
}

class FrameRateNodes : public AdapterNodesTest {
  protected:
    void counts(const std::string& flips, const std::string& time, const std::string& blits) const
    {
        info("fps_count", flips + " " + time + "\n");
        info("rxa_blt_scn_cnt", blits + "\n");
    }
    // Takes the first sample.
    void first(const std::string& flips, const std::string& time, const std::string& blits)
    {
        use_IOCTL_get_fps = 9;
        counts(flips, time, blits);
        EXPECT_EQ(fps_init(), 0);
        EXPECT_EQ(use_IOCTL_get_fps, 0);
    }
    // The rates over a record that is unwritten before; fills status_.
    RateBits next()
    {
        info_ = no_rates();
        status_ = get_fps_info(&info_);
        return bits_of(info_);
    }
    RateBits next(const std::string& flips, const std::string& time, const std::string& blits)
    {
        counts(flips, time, blits);
        return next();
    }

    FpsInfo info_{};
    std::int32_t status_ = 42;
};

TEST_F(FrameRateNodes, AreExactOverASecond)
{
    first("0", "0", "0");
    EXPECT_EQ(next("60", "1000000000", "0"), rates(60.0F, 0.0F, 60.0F, 60.0F));
    EXPECT_EQ(status_, 0);
    first("100", "5000000000", "1000");
    EXPECT_EQ(next("160", "6000000000", "1000"), rates(60.0F, 0.0F, 60.0F, 60.0F));
    EXPECT_EQ(status_, 0);
}

TEST_F(FrameRateNodes, CountFlipsAndBlits)
{
    first("0", "0", "0");
    EXPECT_EQ(next("288", "2000000000", "20"), rates(144.0F, 10.0F, 154.0F, 154.0F));
    first("5", "1000000000", "7");
    EXPECT_EQ(next("6", "4000000000", "8"),
              rates(0x1.555556p-2F, 0x1.555556p-2F, 0x1.555556p-1F, 0x1.555556p-1F));
}

TEST_F(FrameRateNodes, AreSinceTheCallBeforeAndOnAverageSinceTheFirst)
{
    first("7", "1000000000", "2");
    EXPECT_EQ(next("100", "2000000000", "18"), rates(93.0F, 16.0F, 109.0F, 109.0F));
    EXPECT_EQ(next("133", "3000000000", "25"), rates(33.0F, 7.0F, 40.0F, 74.5F));
    EXPECT_EQ(status_, 0);
}

TEST_F(FrameRateNodes, StayUnwrittenUntilATimeIsNew)
{
    first("7", "1000000000", "2");
    EXPECT_EQ(next(), kNoRates);
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(next("100", "2000000000", "18"), rates(93.0F, 16.0F, 109.0F, 109.0F));
    EXPECT_EQ(next(), kNoRates);
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(next("120", "2000000000", "23"), kNoRates);
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(next("133", "3000000000", "25"), rates(33.0F, 7.0F, 40.0F, 74.5F));
    EXPECT_EQ(status_, 0);
}

TEST_F(FrameRateNodes, StartAnewWithEveryInit)
{
    first("7", "1000000000", "2");
    EXPECT_EQ(next("100", "2000000000", "18"), rates(93.0F, 16.0F, 109.0F, 109.0F));
    first("100", "2000000000", "18");
    EXPECT_EQ(next(), kNoRates);
    EXPECT_EQ(next("133", "3000000000", "25"), rates(33.0F, 7.0F, 40.0F, 40.0F));
}

TEST_F(FrameRateNodes, TakeDifferencesOfCountsExactly)
{
    first("16777216", "0", "9007199254740993");
    EXPECT_EQ(next("16777219", "1000000000", "9007199254740994"), rates(3.0F, 1.0F, 4.0F, 4.0F));
}

TEST_F(FrameRateNodes, TakeFlipsForUnsigned)
{
    first("2147483647", "0", "0");
    EXPECT_EQ(next("2147483651", "1000000000", "0"), rates(4.0F, 0.0F, 4.0F, 4.0F));
    first("4294967295", "0", "0");
    EXPECT_EQ(next("3", "1000000000", "0"), rates(0x1p64F, 0.0F, 0x1p64F, 0x1p64F));
}

TEST_F(FrameRateNodes, RoundDifferencesToSinglePrecision)
{
    first("0", "0", "0");
    EXPECT_EQ(next("16777217", "1000000000", "0"), rates(0x1p24F, 0.0F, 0x1p24F, 0x1p24F));
}

TEST_F(FrameRateNodes, RoundTimesBeforeTheirDifference)
{
    first("0", "16777217", "0");
    EXPECT_EQ(next("1", "33554435", "1"),  // as over 16777220 ns
              rates(0x1.dcd648p5F, 0x1.dcd648p5F, 0x1.dcd648p6F, 0x1.dcd648p6F));
    first("0", "259200000000000", "0");             // three days
    EXPECT_EQ(next("60", "259201000000000", "30"),  // as over 1006632960 ns
              rates(0x1.dcd65p5F, 0x1.dcd65p4F, 0x1.65a0bcp6F, 0x1.65a0bcp6F));
}

TEST_F(FrameRateNodes, AreInSinglePrecisionThroughout)
{
    first("0", "0", "0");
    EXPECT_EQ(next("61", "11000000000", "0"),  // 0x1.62e8bap2 in double precision
              rates(0x1.62e8b8p2F, 0.0F, 0x1.62e8b8p2F, 0x1.62e8b8p2F));
}

TEST_F(FrameRateNodes, AddFlipsAndBlitsInSinglePrecision)
{
    first("0", "1700000000000000000", "0");
    EXPECT_EQ(next("60", "1700000100000000000", "6"),  // as over 2^37 ns
              rates(0x1.bf08ecp-2F, 0x1.65a0bcp-5F, 0x1.ebbd04p-2F, 0x1.ebbd02p-2F));
}

TEST_F(FrameRateNodes, TakeNegativeDifferencesOfCountsForHugeOnes)
{
    first("10", "0", "0");
    EXPECT_EQ(next("5", "1000000000", "0"), rates(0x1p64F, 0.0F, 0x1p64F, 0x1p64F));
    first("0", "0", "10");
    next("64", "1000000000", "3");
    EXPECT_EQ(info_.flips, 64.0F);
    EXPECT_EQ(info_.blits, 0x1p64F);
    EXPECT_EQ(info_.flips_blits, 0x1p64F);
}

TEST_F(FrameRateNodes, AreNegativeWhenTimeGoesBack)
{
    first("0", "2000000000", "0");
    EXPECT_EQ(next("64", "1000000000", "0"), rates(-64.0F, -0.0F, -64.0F, -64.0F));
    EXPECT_EQ(status_, 0);
}

TEST_F(FrameRateNodes, TakeNegativeTimesForHugeOnes)
{
    first("0", "0", "0");
    EXPECT_EQ(next("60", "-4611686018427387904", "60"),  // 3 times 2^62
              rates(0x1.2a05f2p-28F, 0x1.2a05f2p-28F, 0x1.2a05f2p-27F, 0x1.2a05f2p-27F));
}

TEST_F(FrameRateNodes, AreInfiniteOrNoNumberWhenTimesRoundAlike)
{
    first("0", "1700000000000000000", "0");
    next("1", "1700000000016666667", "0");
    EXPECT_EQ(status_, 0);
    EXPECT_TRUE(std::isinf(info_.flips));
    EXPECT_GT(info_.flips, 0.0F);
    EXPECT_TRUE(std::isnan(info_.blits));
    EXPECT_TRUE(std::isnan(info_.flips_blits));
    EXPECT_TRUE(std::isinf(info_.average_since));
    EXPECT_GT(info_.average_since, 0.0F);
    next("1", "1700000000016666668", "0");
    EXPECT_EQ(status_, 0);
    EXPECT_TRUE(std::isnan(info_.flips));
}

TEST_F(FrameRateNodes, WithoutNodesHaveNoTime)
{
    first("0", "0", "0");
    std::filesystem::remove(adapter_.info().path() / "fps_count");
    std::filesystem::remove(adapter_.info().path() / "rxa_blt_scn_cnt");
    EXPECT_EQ(next(), kNoRates);
    EXPECT_EQ(status_, -1);
}

TEST_F(FrameRateNodes, WithoutACountOfBlitsAreOfFlipsAlone)
{
    first("0", "0", "0");
    std::filesystem::remove(adapter_.info().path() / "rxa_blt_scn_cnt");
    EXPECT_EQ(fps_init(), 0);
    info("fps_count", "64 1000000000\n");
    EXPECT_EQ(next(), rates(64.0F, 0.0F, 64.0F, 64.0F));
    EXPECT_EQ(status_, 0);
}

TEST_F(FrameRateNodes, KeepTheCountsOfBeforeWhereANodeIsMissing)
{
    first("100", "1000000000", "7");
    std::filesystem::remove(adapter_.info().path() / "fps_count");
    std::filesystem::remove(adapter_.info().path() / "rxa_blt_scn_cnt");
    EXPECT_EQ(fps_init(), 0);
    info("fps_count", "164 2000000000\n");
    EXPECT_EQ(next(), rates(64.0F, 0.0F, 64.0F, 64.0F));
    EXPECT_EQ(next("196", "3000000000", "39"), rates(32.0F, 32.0F, 64.0F, 64.0F));
}

TEST_F(FrameRateNodes, NeedTheFirstNodesForANewTime)
{
    first("0", "1000000000", "0");
    info("rxa_blt_scn_cnt", "60\n");
    EXPECT_EQ(next(), kNoRates);
    EXPECT_EQ(status_, -1);
}

TEST_F(FrameRateNodes, AreSilent)
{
    EXPECT_EQ(stdout_of([&] {
                  fps_init();
                  get_fps_info(&info_);
              }),
              "");
    EXPECT_EQ(take_messages(), Texts{});
}

}  // namespace
}  // namespace nimba::test
