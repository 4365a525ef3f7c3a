// SPDX-License-Identifier: MIT
// Directories that are called by handles.
#include "handle_name.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace nimba::sim::test {
namespace {

TEST(HandleName, NumberIsInLowerCaseHexadecimal)
{
    EXPECT_EQ(handle_name(int64_t{0xAB}, 1), "ab");
    EXPECT_EQ(handle_name(int64_t{0}, 1), "0");
    EXPECT_EQ(handle_name(int64_t{0xAB}, 8), "000000ab");
    EXPECT_EQ(handle_name(int64_t{0x7FFFFFFF}, 8), "7fffffff");
}

TEST(HandleName, TextThatCanNameADirectoryIsTakenAsItIs)
{
    EXPECT_EQ(handle_name(std::string{"80000000"}, 8), "80000000");
    EXPECT_EQ(handle_name(std::string{"0xZZ_-.1"}, 8), "0xZZ_-.1");
    EXPECT_EQ(handle_name(std::string(255, 'a'), 8), std::string(255, 'a'));
}

TEST(HandleName, OtherTextsAndNothingNameNoDirectory)
{
    for (const char* text : {"", ".", "..", ".a", "a/b", "a b", "\xc3\xa4"}) {
        EXPECT_EQ(handle_name(std::string{text}, 1), std::nullopt) << text;
    }
    EXPECT_EQ(handle_name(std::string(256, 'a'), 1), std::nullopt);
    EXPECT_EQ(handle_name(NodeValue{}, 1), std::nullopt);
}

TEST(ShownHandle, IsTheNumberThatANodeShowsAlike)
{
    EXPECT_EQ(shown_handle(int64_t{31}), 31);
    EXPECT_EQ(shown_handle(std::string{"1f"}), 31);
    EXPECT_EQ(shown_handle(std::string{"0"}), 0);
    for (const char* text : {"", "1F", "01f", "1f ", "0x1f", "g", "10000000000000000"}) {
        EXPECT_EQ(shown_handle(std::string{text}), std::nullopt) << text;
    }
    EXPECT_EQ(shown_handle(NodeValue{}), std::nullopt);
}

}  // namespace
}  // namespace nimba::sim::test
