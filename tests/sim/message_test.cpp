// SPDX-License-Identifier: MIT
#include "message.hpp"

#include <gtest/gtest.h>

namespace nimba::sim::test {
namespace {

TEST(Message, ControlCharactersAreShown)
{
    EXPECT_EQ(without_control_characters("a\x1b[0m\n\x7f\xc2\x9b!"),
              "a\\u001b[0m\\u000a\\u007f\\u009b!");
    EXPECT_TRUE(has_control_characters("a\x1b"));
    EXPECT_TRUE(has_control_characters("\xc2\x9b"));
}

TEST(Message, OtherTextStaysAsItIs)
{
    // The second byte of these letters is one of a control character's.
    const char* const letters = "Gr\xc3\x9f\xc4\x9b\xc2\xa0";
    EXPECT_EQ(without_control_characters(letters), letters);
    EXPECT_FALSE(has_control_characters(letters));
    EXPECT_EQ(without_control_characters("\xc2"), "\xc2");
    EXPECT_EQ(without_control_characters(""), "");
}

}  // namespace
}  // namespace nimba::sim::test
