// SPDX-License-Identifier: MIT
#include <nimba_mgmt_interface.h>

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace nimba::test {
namespace {

struct Trim {
    std::string_view text;
    std::string_view trimmed;
};

const std::vector<Trim> kTrims = {
    {"", ""},
    {" ", ""},
    {" \t\n\v\f\r", ""},
    {"a", "a"},
    {" a", "a"},
    {"a ", "a"},
    {"  a  ", "a"},
    {"a b", "a b"},
    {"\t a \t b\n ", "a \t b"},
    {" \t\n\v\f\rkey\r\f\v\n\t ", "key"},
    // no white space: control characters and bytes beyond ASCII
    {"\x01 a\x1f", "\x01 a\x1f"},
    {" \xC2\xA0x\xE2\x80\x89 ", "\xC2\xA0x\xE2\x80\x89"},
    {"\x85\xA0", "\x85\xA0"},
};

TEST(TrimWhitespace, RemovesTheSixKindsFromBothEndsInPlace)
{
    for (const Trim& trim : kTrims) {
        SCOPED_TRACE(testing::PrintToString(trim.text));
        std::vector<char> text{trim.text.begin(), trim.text.end()};
        text.push_back('\0');
        trimWhitespace(text.data());
        EXPECT_EQ(std::string_view{text.data()}, trim.trimmed);
    }
}

TEST(TrimWhitespace, WritesNothingBehindTheText)
{
    std::string buffer{" ab \0####", 9};
    trimWhitespace(buffer.data());
    EXPECT_EQ(buffer.substr(0, 3), (std::string{"ab\0", 3}));
    EXPECT_EQ(buffer.substr(5), "####");
}

struct FileName {
    std::string path;
    std::string file_name;
};

const std::vector<FileName> kFileNames = {
    {"/usr/bin/app", "app"},
    {"/app", "app"},
    {"app", "app"},
    {"dir/app.bin", "app.bin"},
    {"C:\\Games\\app.exe", "app.exe"},
    {"/opt\\app", "app"},
    {"\\opt/app", "app"},
    {"/opt/two words", "two words"},
    {"/usr/bin/", ""},
    {"C:\\Games\\", ""},
    {"/", ""},
    {"\\", ""},
    {"", ""},
};

TEST(GetFilename, IsWhatFollowsTheLastSeparatorOfEitherKind)
{
    for (const FileName& name : kFileNames) {
        SCOPED_TRACE(name.path);
        EXPECT_EQ(get_filename(name.path), name.file_name);
    }
}

}  // namespace
}  // namespace nimba::test
