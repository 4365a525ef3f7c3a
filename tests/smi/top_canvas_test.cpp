// SPDX-License-Identifier: MIT
#include "tools/smi/top/canvas.hpp"

#include <gtest/gtest.h>

namespace nimba::smi::top {
namespace {

TEST(TopCanvas, WritesTextUpToTheLimitAndTheBorder)
{
    Canvas canvas{{6, 2}};
    EXPECT_EQ(canvas.put(1, 0, "abcdefgh", Ink::kTitle), 5);
    EXPECT_EQ(canvas.put(0, 1, "abcdefgh", Ink::kPlain, 3), 3);
    EXPECT_EQ(canvas.row(0), " abcde");
    EXPECT_EQ(canvas.row(1), "abc");
    EXPECT_EQ(canvas.cell(0, 0), (Cell{U' ', Ink::kPlain}));
    EXPECT_EQ(canvas.cell(1, 0), (Cell{U'a', Ink::kTitle}));
}

TEST(TopCanvas, TakesNothingOutsideOfIt)
{
    Canvas canvas{{3, 1}};
    EXPECT_EQ(canvas.put(0, 1, "abc", Ink::kPlain), 0);
    EXPECT_EQ(canvas.put(0, -1, "abc", Ink::kPlain), 0);
    EXPECT_EQ(canvas.put(-1, 0, "abc", Ink::kPlain), 0);
    EXPECT_EQ(canvas.put(3, 0, "abc", Ink::kPlain), 0);
    canvas.dye(-1, 0, 10, Ink::kBad);
    EXPECT_EQ(canvas.row(0), "");
    EXPECT_EQ(canvas.cell(2, 0).ink, Ink::kBad);
}

TEST(TopCanvas, GivesWideCharactersTwoColumnsOrNone)
{
    Canvas canvas{{5, 1}};
    EXPECT_EQ(canvas.put(0, 0, "玩a画面", Ink::kPlain), 5);
    EXPECT_EQ(canvas.row(0), "玩a画");
    EXPECT_EQ(canvas.cell(1, 0).glyph, U'\0');
    Canvas narrow{{4, 1}};
    EXPECT_EQ(narrow.put(0, 0, "玩a画", Ink::kPlain), 3);
}

TEST(TopCanvas, LeavesOutWhatIsPutOntoACharacter)
{
    Canvas canvas{{5, 1}};
    EXPECT_EQ(canvas.put(0, 0, "e\u0301e", Ink::kPlain), 2);
    EXPECT_EQ(canvas.row(0), "ee");
}

TEST(TopCanvas, DrawsAFrame)
{
    Canvas canvas{{5, 4}};
    draw_frame(canvas, {1, 0, 4, 3});
    EXPECT_EQ(canvas.row(0), " ╭──╮");
    EXPECT_EQ(canvas.row(1), " │  │");
    EXPECT_EQ(canvas.row(2), " ╰──╯");
    EXPECT_EQ(canvas.row(3), "");
}

TEST(TopCanvas, BecomesAscii)
{
    Canvas canvas{{12, 1}};
    canvas.put(0, 0, "╭─│ 64 °C…é玩", Ink::kPlain);
    canvas.make_ascii();
    EXPECT_EQ(canvas.row(0), "+-| 64  C.?");
    Canvas wide{{4, 1}};
    wide.put(0, 0, "玩a", Ink::kPlain);
    wide.make_ascii();
    EXPECT_EQ(wide.row(0), "? a");
}

TEST(TopCanvas, HasAnInkForEveryShare)
{
    EXPECT_EQ(scale_ink(-1), Ink::kScale0);
    EXPECT_EQ(scale_ink(0), Ink::kScale0);
    EXPECT_EQ(scale_ink(0.2), Ink::kScale1);
    EXPECT_EQ(scale_ink(0.5), Ink::kScale2);
    EXPECT_EQ(scale_ink(0.79), Ink::kScale3);
    EXPECT_EQ(scale_ink(0.8), Ink::kScale4);
    EXPECT_EQ(scale_ink(7), Ink::kScale4);
}

}  // namespace
}  // namespace nimba::smi::top
