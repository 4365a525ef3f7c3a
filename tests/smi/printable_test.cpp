// SPDX-License-Identifier: MIT
#include "tools/smi/text/printable.hpp"

#include <gtest/gtest.h>

#include <string>

namespace nimba::smi {
namespace {

using namespace std::string_literals;

TEST(Printable, OrdinaryTextStays)
{
    EXPECT_EQ(printable(""), "");
    EXPECT_EQ(printable("Gpu0:Nimba-K1 100% \\"), "Gpu0:Nimba-K1 100% \\");
    EXPECT_EQ(printable("\xC3\xA9\xE6\x98\xBE\xF0\x9F\x96\xA5"),
              "\xC3\xA9\xE6\x98\xBE\xF0\x9F\x96\xA5");
}

TEST(Printable, ControlCharactersAreWrittenOut)
{
    EXPECT_EQ(printable("\x1b[31m"), "\\x1b[31m");
    EXPECT_EQ(printable("a\tb\nc\x7f"), "a\\x09b\\x0ac\\x7f");
    EXPECT_EQ(printable("a\0b"s), "a\\x00b");
}

TEST(Printable, ControlCharactersBeyondAsciiAreWrittenOut)
{
    EXPECT_EQ(printable("\xC2\x9B"
                        "2J"),
              "\\u009b2J");
    EXPECT_EQ(printable("\xC2\xA0"), "\xC2\xA0");
}

TEST(Printable, CharactersThatTurnTheTextOrBreakTheLineAreWrittenOut)
{
    EXPECT_EQ(printable("a\xE2\x80\xAE"
                        "b"),
              "a\\u202eb");
    EXPECT_EQ(printable("\xE2\x80\x8E\xE2\x80\xA8\xE2\x81\xA6\xE2\x81\xA9\xD8\x9C"),
              "\\u200e\\u2028\\u2066\\u2069\\u061c");
    EXPECT_EQ(printable("\xE2\x80\xA7\xE2\x80\xAF"), "\xE2\x80\xA7\xE2\x80\xAF");
}

TEST(Printable, NewlinesStayInLines)
{
    EXPECT_EQ(printable_lines("a\n \x1b"), "a\n \\x1b");
}

TEST(Printable, EveryByteThatIsNoUtf8IsReplaced)
{
    const std::string r = "\xEF\xBF\xBD";
    EXPECT_EQ(printable("a\xFF"
                        "b"),
              "a" + r + "b");
    EXPECT_EQ(printable("\x80\x81"), r + r);
    EXPECT_EQ(printable("\xE6\x98"), r + r);                  // cut short
    EXPECT_EQ(printable("\xE6\x98g"), r + r + "g");           // interrupted
    EXPECT_EQ(printable("\xC0\xAF"), r + r);                  // overlong
    EXPECT_EQ(printable("\xED\xA0\x80"), r + r + r);          // half of a surrogate pair
    EXPECT_EQ(printable("\xF4\x90\x80\x80"), r + r + r + r);  // beyond the last code point
}

TEST(Printable, ColumnsCountCharacters)
{
    EXPECT_EQ(columns(""), 0U);
    EXPECT_EQ(columns("Nimba"), 5U);
    EXPECT_EQ(columns("\xC3\xA9t\xC3\xA9"), 3U);
}

TEST(Cut, KeepsWhatFitsAndEndsOthersWithTheMark)
{
    EXPECT_EQ(cut("", 0, "..."), "");
    EXPECT_EQ(cut("abcdef", 6, "..."), "abcdef");
    EXPECT_EQ(cut("abcdefg", 6, "..."), "abc...");
    EXPECT_EQ(cut("\u00e4\u00f6\u00fc\u20ac", 3, "\u2026"), "\u00e4\u00f6\u2026");
    EXPECT_EQ(cut("abcd", 3, "..."), "...");
    EXPECT_EQ(cut("abcd", 2, "..."), "ab");
    EXPECT_EQ(cut("abcd", 0, "..."), "");
}

}  // namespace
}  // namespace nimba::smi
