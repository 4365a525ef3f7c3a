// SPDX-License-Identifier: MIT
#include <nimba_mgmt_interface.h>

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace nimba::test {
namespace {

using namespace std::string_view_literals;

struct Search {
    std::string_view buffer;  // its exact bytes; a NUL among them is a byte like any other
    const char* key;
    int32_t found;
};

const std::vector<Search> kSearches = {
    // where the value begins
    {"Driver Version : 1.2\n"sv, "Driver Version : ", 17},
    {"VA=1\nchip=7\n"sv, "chip=", 10},
    {"ab:"sv, "b", 2},
    {"ab:"sv, "a", 1},
    {"ab:"sv, "ab", 2},
    {"x\0key=1"sv, "key=", 6},
    // the first occurrence
    {"k=1 k=2 "sv, "k=", 2},
    {"aaab "sv, "aab", 4},
    {"ababac "sv, "abac", 6},
    {"aab aab "sv, "ab", 3},
    // nothing found
    {"Driver"sv, "driver", -1},
    {"abcdef"sv, "xyz", -1},
    {"abcdef"sv, "abd", -1},
    // a key that ends at the buffer's last byte
    {"ab:"sv, "ab:", -1},
    {"xab"sv, "ab", -1},
    {"ab:"sv, ":", -1},
    {"xab\0"sv, "ab", 3},
    // keys as long as the buffer, longer, and empty
    {"a"sv, "a", -1},
    {"ab"sv, "abc", -1},
    {""sv, "a", -1},
    {""sv, "", -1},
    {"ab:"sv, "", -1},
    {"\0\0"sv, "", -1},
};

TEST(FindStrInBuffer, ReturnsTheIndexBehindTheFirstOccurrence)
{
    for (const Search& search : kSearches) {
        SCOPED_TRACE(testing::PrintToString(search.buffer) + " in search of \"" + search.key + '"');
        // An exact copy on the heap: a byte read behind its end is an error to a sanitizer.
        const std::vector<char> bytes{search.buffer.begin(), search.buffer.end()};
        EXPECT_EQ(find_str_in_buffer(bytes.data(), static_cast<int32_t>(bytes.size()), search.key),
                  search.found);
    }
}

TEST(FindStrInBuffer, LooksAtNoByteBehindTheGivenLength)
{
    EXPECT_EQ(find_str_in_buffer("one two three", 7, "three"), -1);
    EXPECT_EQ(find_str_in_buffer("one two three", 7, "two"), -1);
    EXPECT_EQ(find_str_in_buffer("one two three", 8, "two"), 7);
}

TEST(FindStrInBuffer, FindsNothingInANegativeLength)
{
    EXPECT_EQ(find_str_in_buffer("abc", -1, "a"), -1);
    EXPECT_EQ(find_str_in_buffer("abc", -1, ""), -1);
}

struct Copy {
    const char* source;
    uint64_t size;
    std::string_view stored;  // the NUL included
};

const std::vector<Copy> kCopies = {
    {"abc\ndef", 8, "abc\0"sv},
    {"abc\ndef", 5, "abc\0"sv},
    {"abc\ndef", 4, "abc\0"sv},
    {"abc\ndef", 3, "ab\0"sv},
    {"abc\ndef", 2, "a\0"sv},
    {"abc\ndef", 1, "\0"sv},
    {"abcdef", 8, "abcdef\0"sv},
    {"abcdef", 7, "abcdef\0"sv},
    {"abcdef", 6, "abcde\0"sv},
    {"abc\r\ndef", 8, "abc\r\0"sv},
    {"\nabc", 8, "\0"sv},
    {"", 8, "\0"sv},
    {"", 1, "\0"sv},
    // A size of 0 wraps, which leaves the line's length as the only bound.
    {"abc\ndef", 0, "abc\0"sv},
    {"abcdef", 0, "abcdef\0"sv},
    {"abc\ndef", UINT64_MAX, "abc\0"sv},
};

TEST(SafeStrCopyTillReturn, StoresTheFirstLineAndANul)
{
    for (const Copy& copy : kCopies) {
        SCOPED_TRACE(testing::PrintToString(copy.source) + " in " + std::to_string(copy.size));
        std::string destination(10, '#');
        EXPECT_EQ(safe_str_copy_till_return(destination.data(), copy.source, copy.size),
                  copy.stored.size());
        std::string expected(10, '#');
        expected.replace(0, copy.stored.size(), copy.stored);
        EXPECT_EQ(destination, expected);
    }
}

}  // namespace
}  // namespace nimba::test
