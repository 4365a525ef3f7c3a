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

TEST(TopUnicode, BreaksATextIntoLines)
{
    using Lines = std::vector<std::string>;
    EXPECT_EQ(in_lines("", 10, 2), (Lines{""}));
    EXPECT_EQ(in_lines("to be or not", 12, 2), (Lines{"to be or not"}));
    EXPECT_EQ(in_lines("to be or not", 11, 2), (Lines{"to be or", "  not"}));
    EXPECT_EQ(in_lines("to be or  not to be", 8, 2), (Lines{"to be or", "  not to", "  be"}));
    EXPECT_EQ(in_lines("in /sys/kernel/debug", 8, 1),
              (Lines{"in", " /sys/ke", " rnel/de", " bug"}));
    EXPECT_EQ(in_lines("玩具 玩具", 5, 0), (Lines{"玩具", "玩具"}));
    EXPECT_EQ(in_lines("玩具", 1, 0), (Lines{"玩", "具"}));
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
