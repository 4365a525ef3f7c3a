// SPDX-License-Identifier: MIT
#include "tools/smi/top/unicode.hpp"

#include <gtest/gtest.h>

namespace nimba::smi::top {
namespace {

TEST(TopUnicode, ReadsCharactersOfOneToFourBytes)
{
    EXPECT_EQ(characters("aé⣿🎮"), U"aé⣿🎮");
    EXPECT_EQ(characters(""), U"");
}

TEST(TopUnicode, ReplacesEveryByteThatIsNoUtf8)
{
    EXPECT_EQ(characters("a\xff\xc3"), U"a\xFFFD\xFFFD");
    EXPECT_EQ(characters("\xe2\xa3"), U"\xFFFD\xFFFD");
    EXPECT_EQ(characters("\xc3z"), U"\xFFFDz");
}

TEST(TopUnicode, WritesCharactersOfOneToFourBytes)
{
    std::string text;
    for (const char32_t character : std::u32string{U"aé⣿🎮"}) {
        append_utf8(text, character);
    }
    EXPECT_EQ(text, "aé⣿🎮");
}

TEST(TopUnicode, CountsTheColumnsOfATerminal)
{
    EXPECT_EQ(width_of("abc"), 3);
    EXPECT_EQ(width_of("64 °C"), 5);
    EXPECT_EQ(width_of("玩具"), 4);
    EXPECT_EQ(width_of("e\u0301"), 1);
}

TEST(TopUnicode, CutsATextThatHasNoRoom)
{
    EXPECT_EQ(cut("abcdef", 6), "abcdef");
    EXPECT_EQ(cut("abcdef", 5), "abcd…");
    EXPECT_EQ(cut("abcdef", 1), "…");
    EXPECT_EQ(cut("abcdef", 0), "");
    EXPECT_EQ(cut("abcdef", -3), "");
    EXPECT_EQ(cut("玩具玩具", 6), "玩具…");
}

TEST(TopUnicode, KnowsTheAsciiCharacterThatComesNearest)
{
    EXPECT_EQ(nearest_ascii(U'x'), U'x');
    EXPECT_EQ(nearest_ascii(U'╯'), U'+');
    EXPECT_EQ(nearest_ascii(U'▼'), U'v');
    EXPECT_EQ(nearest_ascii(U'é'), U'?');
}

}  // namespace
}  // namespace nimba::smi::top
