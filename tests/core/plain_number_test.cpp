// SPDX-License-Identifier: MIT
#include "core/plain_number.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace nimba::test {
namespace {

using Number = std::optional<std::int64_t>;
using Rows = std::vector<std::pair<std::string, std::int64_t>>;

// What may stand behind a number.
const std::string kBehind{"\n0957\0 -:/=\x80\xB5\xFF", 14};

// The text in memory of its own, as long as a number is looked at, with `behind` in the rest.
std::vector<char> memory_of(const std::string& text, char behind)
{
    std::vector<char> memory(std::max(text.size(), kNumberLookAhead), behind);
    std::ranges::copy(text, memory.begin());
    return memory;
}

Number decimal(const std::string& text, char behind = '\n')
{
    return plain_decimal(memory_of(text, behind).data(), text.size());
}

Number hexadecimal(const std::string& text, char behind = '\n')
{
    return plain_hexadecimal(memory_of(text, behind).data(), text.size());
}

// The text with every other character in place of one of its own, for each of them.
std::vector<std::string> spoiled(const std::string& text, const std::string& digits)
{
    std::vector<std::string> all;
    for (std::size_t place = 0; place < text.size(); ++place) {
        for (int code = 0; code < 256; ++code) {
            const char character = static_cast<char>(code);
            if (digits.find(character) == std::string::npos) {
                all.push_back(text);
                all.back()[place] = character;
            }
        }
    }
    return all;
}

const Rows kDecimals{{"7", 7},
                     {"12", 12},
                     {"987", 987},
                     {"1234", 1234},
                     {"98765", 98765},
                     {"123456", 123456},
                     {"9876543", 9876543},
                     {"12345678", 12345678},
                     {"987654321", 987654321},
                     {"1234567890", 1234567890},
                     {"98765432109", 98765432109},
                     {"123456789012", 123456789012},
                     {"9876543210987", 9876543210987},
                     {"12345678901234", 12345678901234},
                     {"987654321098765", 987654321098765},
                     {"0", 0},
                     {"00", 0},
                     {"000000000", 0},
                     {"000000000000012", 12},
                     {"100000000", 100000000},
                     {"99999999", 99999999},
                     {"999999999999999", 999999999999999}};

TEST(PlainDecimal, IsReadAtEveryLengthWhateverStandsBehindIt)
{
    for (const auto& [text, number] : kDecimals) {
        for (const char behind : kBehind) {
            EXPECT_EQ(decimal(text, behind), number) << text << " before " << int{behind};
        }
    }
}

TEST(PlainDecimal, MayBeNegativeAtEveryLength)
{
    for (const auto& [text, number] : kDecimals) {
        for (const char behind : kBehind) {
            EXPECT_EQ(decimal("-" + text, behind), -number) << text << " before " << int{behind};
        }
    }
}

TEST(PlainDecimal, HasADigitAndNotMoreThanFifteen)
{
    for (const char behind : kBehind) {
        EXPECT_EQ(decimal("", behind), std::nullopt);
        EXPECT_EQ(decimal("-", behind), std::nullopt);
        EXPECT_EQ(decimal("1234567890123456", behind), std::nullopt);
        EXPECT_EQ(decimal("-1234567890123456", behind), std::nullopt);
        EXPECT_EQ(decimal("0000000000000001", behind), std::nullopt);
        EXPECT_EQ(decimal("12345678901234567890123456", behind), std::nullopt);
    }
}

TEST(PlainDecimal, HasNoCharacterButDigitsInAnyPlace)
{
    for (const auto& [text, number] : kDecimals) {
        for (const std::string& other : spoiled(text, "0123456789")) {
            if (other[0] != '-' || other.size() == 1) {
                EXPECT_EQ(decimal(other), std::nullopt) << other;
                EXPECT_EQ(decimal(other, '5'), std::nullopt) << other;
            }
            EXPECT_EQ(decimal("-" + other), std::nullopt) << other;
        }
    }
}

TEST(PlainDecimal, HasNoOtherSignOrBlankOrPrefix)
{
    for (const char* text : {"+5", "--5", "-+5", "+-5", "5-", " 5", "5 ", "\t5", "- 5", "0x1"}) {
        EXPECT_EQ(decimal(text), std::nullopt) << text;
    }
}

const Rows kHexadecimals{{"f", 0xf},
                         {"1a", 0x1a},
                         {"9bC", 0x9bc},
                         {"DEF0", 0xdef0},
                         {"12345", 0x12345},
                         {"6789ab", 0x6789ab},
                         {"CDEFabc", 0xcdefabc},
                         {"fedcba98", 0xfedcba98},
                         {"FEDCBA98", 0xfedcba98},
                         {"76543210", 0x76543210},
                         {"80000000", 0x80000000},
                         {"ffffffff", 0xffffffff},
                         {"00000000", 0},
                         {"0", 0},
                         {"000d", 0xd}};

TEST(PlainHexadecimal, IsReadAtEveryLengthWhateverStandsBehindIt)
{
    for (const auto& [text, number] : kHexadecimals) {
        for (const char behind : kBehind) {
            EXPECT_EQ(hexadecimal(text, behind), number) << text << " before " << int{behind};
        }
    }
}

TEST(PlainHexadecimal, HasADigitAndNotMoreThanEight)
{
    for (const char behind : kBehind) {
        EXPECT_EQ(hexadecimal("", behind), std::nullopt);
        EXPECT_EQ(hexadecimal("123456789", behind), std::nullopt);
        EXPECT_EQ(hexadecimal("000000001", behind), std::nullopt);
        EXPECT_EQ(hexadecimal("fffffffffffffffffffffffff", behind), std::nullopt);
    }
}

TEST(PlainHexadecimal, HasNoCharacterButDigitsInAnyPlace)
{
    for (const auto& [text, number] : kHexadecimals) {
        for (const std::string& other : spoiled(text, "0123456789abcdefABCDEF")) {
            EXPECT_EQ(hexadecimal(other), std::nullopt) << other;
            EXPECT_EQ(hexadecimal(other, '5'), std::nullopt) << other;
        }
    }
}

TEST(PlainHexadecimal, HasNoSignOrBlankOrPrefix)
{
    for (const char* text : {"-5", "+5", " 5", "5 ", "0x1", "0X1"}) {
        EXPECT_EQ(hexadecimal(text), std::nullopt) << text;
    }
}

}  // namespace
}  // namespace nimba::test
