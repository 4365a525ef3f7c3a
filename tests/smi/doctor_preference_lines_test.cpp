// SPDX-License-Identifier: MIT
#include "tools/smi/doctor/preference_lines.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

constexpr const char* kFile =
    "; a comment\n"
    "\n"
    "[viewer]\n"
    "FullPath = /usr/bin/viewer\n"
    "PreferGpuName = Gpu0:Nimba-K1\n"
    "PreferGpuBusID = 0000:01:00.0 ; of the first\n"
    "GpuPrefer = 1\n"
    "\n"
    "[player]\n"
    "GpuPrefer=1";

TEST(PreferenceLines, CountEachApplication)
{
    EXPECT_EQ(count_preference_lines(kFile), (PreferenceLines{2, 0, 0}));
}

TEST(PreferenceLines, OfAnEmptyFileAreNone)
{
    EXPECT_EQ(count_preference_lines(""), (PreferenceLines{0, 0, 0}));
    EXPECT_EQ(count_preference_lines("\n\n"), (PreferenceLines{0, 0, 0}));
}

TEST(PreferenceLines, AreBadWhenTheyAreNeitherSectionNorKey)
{
    EXPECT_EQ(count_preference_lines("[viewer]\nGpuPrefer = 1\nnonsense\n]\n"),
              (PreferenceLines{1, 2, 3}));
}

TEST(PreferenceLines, AreBadWithAnUnknownKey)
{
    EXPECT_EQ(count_preference_lines("[viewer]\nGpuPrefers = 1\n"), (PreferenceLines{1, 1, 2}));
}

TEST(PreferenceLines, AreBadInFrontOfTheFirstSection)
{
    EXPECT_EQ(count_preference_lines("GpuPrefer = 1\n[viewer]\n"), (PreferenceLines{1, 1, 1}));
}

TEST(PreferenceLines, MayBeginWithAByteOrderMark)
{
    EXPECT_EQ(count_preference_lines("\xEF\xBB\xBF[viewer]\r\nGpuPrefer = 1\r\n"),
              (PreferenceLines{1, 0, 0}));
}

}  // namespace
}  // namespace nimba::smi
