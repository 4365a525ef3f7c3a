// SPDX-License-Identifier: MIT
#include "replay/frames.hpp"

#include <gtest/gtest.h>

#include <cstdint>

namespace nimba::sim {
namespace {

using namespace std::chrono_literals;
using archive::Flips;
using archive::FrameNodes;

TEST(ReplayFrames, GoOnByWholeFramesInTheirTime)
{
    const std::array<Flips, 2> flips{{{100'000'000, 10}, {300'000'000, 20}}};
    EXPECT_EQ(flips_after(flips, 0ms), (Flips{300'000'000, 20}));
    EXPECT_EQ(flips_after(flips, 19ms), (Flips{300'000'000, 20}));
    EXPECT_EQ(flips_after(flips, 20ms), (Flips{320'000'000, 21}));
    EXPECT_EQ(flips_after(flips, 1s), (Flips{1'300'000'000, 70}));
}

TEST(ReplayFrames, NeverOvertakeTheNextSample)
{
    const std::array<Flips, 2> flips{{{100'000'000, 10}, {300'000'000, 20}}};
    const Flips next{340'000'000, 22};
    EXPECT_EQ(flips_after(flips, 20ms, next), (Flips{320'000'000, 21}));
    EXPECT_EQ(flips_after(flips, 1s, next), next);
}

TEST(ReplayFrames, StandStillWhereNothingWasCounted)
{
    EXPECT_EQ(flips_after({{{5, 7}, {5, 7}}}, 1s), (Flips{5, 7}));
    EXPECT_EQ(flips_after({{{5, 7}, {9, 6}}}, 1s), (Flips{9, 6}));
    EXPECT_EQ(flips_after({{{-5, 7}, {INT64_MAX, INT64_MAX}}}, 1s), (Flips{INT64_MAX, INT64_MAX}));
    EXPECT_EQ(flips_after({{{0, 0}, {1, int64_t{1} << 62U}}}, 24h), (Flips{1, int64_t{1} << 62U}));
}

TEST(ReplayFrames, NodesGoOnWithTheFlips)
{
    const std::array<FrameNodes, 2> frames{
        {{0.0, "10 100000000\n", "4\n"}, {0.25, "20 300000000\n", "24\n"}}};
    const auto texts = frame_texts_after(frames, 40ms);
    ASSERT_TRUE(texts);
    EXPECT_EQ(texts->fps_count, "22 340000000\n");
    EXPECT_EQ(texts->rxa_blt_scn_cnt, "28\n");
}

TEST(ReplayFrames, NodesThatAreNoNumbersStay)
{
    EXPECT_FALSE(frame_texts_after({{{0.0, "x", "4\n"}, {0.25, "20 300000000\n", "24\n"}}}, 40ms));
    EXPECT_FALSE(frame_texts_after({{{0.0, "10", "4\n"}, {0.25, "20", "24\n"}}}, 40ms));
    EXPECT_EQ(frame_texts_after({{{0.0, "1 1\n", "x"}, {0.25, "2 20000001\n", "y"}}}, 40ms)
                  ->rxa_blt_scn_cnt,
              "y");
}

}  // namespace
}  // namespace nimba::sim
