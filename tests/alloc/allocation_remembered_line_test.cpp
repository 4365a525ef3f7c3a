// SPDX-License-Identifier: MIT
// Lines that stand where the last node had one with the same key, or nearly the same.
#include "alloc/allocation_text.hpp"
#include "allocation_keys.hpp"
#include "allocation_text_fixture.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace nimba::test {
namespace {

// The next record of the parser.
Record next(AllocationParser& parser, std::string_view text)
{
    parser.begin();
    parser.add(text);
    return parser.record();
}

// The first node is read without a remembered key, the second with that of the first.
TEST(RememberedKey, OfTheLastNodeReadsEveryNumberAlike)
{
    for (const auto& [text, number] : std::vector<std::pair<std::string, std::int32_t>>{
             {"0", 0},
             {"-0", 0},
             {"8294400", 8294400},
             {"-5", -5},
             {"2147483647", 2147483647},
             {"2147483648", -2147483648},
             {"-2147483649", 2147483647},
             {"4294967297", 1},
             {"1234567", 1234567},
             {"12345678", 12345678},
             {"123456789", 123456789},
             {"99999999", 99999999},
             {"100000000", 100000000},
             {"12345678901", -539222987},
             {"-12345678901", 539222987},
             {"123456789012", -1097262572},
             {"-123456789012", 1097262572},
             {"1234567890123", 1912276171},
             {"-1234567890123", -1912276171},
             {"12345678901234", 1942892530},
             {"-12345678901234", -1942892530},
             {"123456789012345", -2045911175},
             {"-123456789012345", 2045911175},
             {"1234567890123456", 1015724736},
             {"-1234567890123456", -1015724736},
             {"999999999999999999", -1486618625},
             {"1234567\xFA", 1234567},
             {"12345678\xFF", 12345678},
             {"1/", 1},
             {"1:", 1},
             {"9223372036854775807", -1},
             {"9223372036854775808", -1},
             {"-9223372036854775808", 0},
             {"-9223372036854775809", 0},
             {"00000000000000000000000000000000000012", 12},
             {"+7", 7},
             {" \t\v\f\r7", 7},
             {"- 7", 0},
             {"--7", 0},
             {"0x10", 0},
             {"1e3", 1},
             {"", 0}}) {
        std::string lines = "size=";
        lines.append(text).append("\ncompress_format=").append(text).append("\n");
        AllocationParser parser{true};
        for (int node = 0; node < 2; ++node) {
            const Record record = next(parser, lines);
            EXPECT_EQ(record.size, number) << text << " in node " << node;
            EXPECT_EQ(record.compress_format, number) << text << " in node " << node;
        }
    }
}

class AlmostRememberedKey : public testing::TestWithParam<RecordField> {};

TEST_P(AlmostRememberedKey, IsAnotherKey)
{
    const std::string key = std::string{GetParam().name} + "=";
    const Record one = with({}, GetParam().member, 1);
    for (std::size_t place = 0; place < key.size(); ++place) {
        for (unsigned bit = 0; bit < 8; ++bit) {
            std::string other = key;
            other[place] = static_cast<char>(static_cast<unsigned char>(other[place]) ^ 1U << bit);
            AllocationParser parser{true};
            EXPECT_EQ(next(parser, key + "1\n"), one);
            EXPECT_EQ(next(parser, key + "1\n"), one);
            EXPECT_EQ(next(parser, other + "7\n"), Record{}) << other;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, AlmostRememberedKey, testing::ValuesIn(kAllocationKeys),
                         [](const testing::TestParamInfo<RecordField>& row) {
                             return std::string{row.param.name};
                         });

// The longest line with a number that is read in one go.
constexpr std::string_view kLongLine = "compress_format=-123456789012345\n";
constexpr std::int32_t kNumber = 2045911175;

// What the first bytes of that line, from 1 to all of them, are read as: their last is no part of
// the value.
constexpr std::array<std::int32_t, 33> kNumbersOfBeginnings{
    0,         0,          0,           0,           0,         0,          0,
    0,         0,          0,           0,           0,         0,          0,
    0,         0,          0,           0,           -1,        -12,        -123,
    -1234,     -12345,     -123456,     -1234567,    -12345678, -123456789, -1234567890,
    539222987, 1097262572, -1912276171, -1942892530, kNumber};

// What stands behind a node in the memory that it was read to.
class RememberedLongLine : public testing::TestWithParam<std::string> {};

TEST_P(RememberedLongLine, MayBeCutAnywhere)
{
    for (std::size_t size = 1; size <= kLongLine.size(); ++size) {
        AllocationParser parser{true};
        EXPECT_EQ(next(parser, kLongLine).compress_format, kNumber);
        std::vector<char> memory{kLongLine.begin(), kLongLine.begin() + size};
        memory.insert(memory.end(), GetParam().begin(), GetParam().end());
        memory.shrink_to_fit();  // a read behind it is found by the sanitizer
        EXPECT_EQ(next(parser, {memory.data(), size}),
                  with({}, &Record::compress_format, kNumbersOfBeginnings.at(size - 1)))
            << size;
    }
}

INSTANTIATE_TEST_SUITE_P(BeforeOtherBytes, RememberedLongLine,
                         testing::Values("", "\n", "0\n", "=7\nsize=8\n",
                                         "56789012345678901234567890123456789\n",
                                         "\nsize=8\nsize=8\nsize=8\nsize=8\nsize=8\nsize=8\n"));

// Numbers of every length that is read in one go, and their low bits.
constexpr std::array<std::pair<const char*, std::int32_t>, 15> kNumbers{
    {{"1", 1},
     {"12", 12},
     {"123", 123},
     {"1234", 1234},
     {"12345", 12345},
     {"123456", 123456},
     {"1234567", 1234567},
     {"12345678", 12345678},
     {"123456789", 123456789},
     {"1234567890", 1234567890},
     {"12345678901", -539222987},
     {"123456789012", -1097262572},
     {"1234567890123", 1912276171},
     {"12345678901234", 1942892530},
     {"123456789012345", -2045911175}}};

// Expects that a remembered line is read alike before every beginning of another.
void expect_before_a_cut_line(const std::string& line, const Record& expected)
{
    const std::string cut = "gpu_virt_addr";
    for (std::size_t size = 0; size <= cut.size(); ++size) {
        AllocationParser parser{true};
        next(parser, line + cut + "=1\n");
        std::vector<char> memory{line.begin(), line.end()};
        memory.insert(memory.end(), cut.data(), cut.data() + size);
        memory.shrink_to_fit();  // as above
        EXPECT_EQ(next(parser, {memory.data(), memory.size()}), expected) << line << size;
    }
}

TEST(RememberedKey, OfALineBeforeACutOneReadsItsNumberAlike)
{
    for (const RecordField& field : {RecordField{"size=", &Record::size},
                                     RecordField{"compress_format=", &Record::compress_format}}) {
        const std::string key = field.name;
        for (const auto& [text, number] : kNumbers) {
            expect_before_a_cut_line(key + text + "\n", with({}, field.member, number));
            expect_before_a_cut_line(key + "-" + text + "\n", with({}, field.member, -number));
        }
    }
}

TEST_F(AllocationText, MayBeTheBeginningOfTheNodeReadBeforeIt)
{
    tree_.add("long", std::string{kLongLine} + "size=8\nshare=9\n");
    std::vector<std::string> names;
    Records expected;
    for (std::size_t size = 1; size <= kLongLine.size(); ++size) {
        names.emplace_back("long");
        expected.push_back(with(blank(), &Record::compress_format, kNumber));
        expected.back().size = 8;
        expected.back().share = 9;
        names.push_back(std::to_string(size));
        tree_.add(names.back(), kLongLine.substr(0, size));
        expected.push_back(
            with(blank(), &Record::compress_format, kNumbersOfBeginnings.at(size - 1)));
    }
    const ListedAs listed{names};
    Records list;
    EXPECT_EQ(get_current_allocation_data_try(list, 0, kVa), 0);
    EXPECT_EQ(list, expected);
}

}  // namespace
}  // namespace nimba::test
