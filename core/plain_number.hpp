// SPDX-License-Identifier: MIT
// The numbers that a driver prints, eight digits at a time.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>

namespace nimba {

static_assert(std::endian::native == std::endian::little, "the first character is the lowest byte");
static_assert(sizeof(long) == sizeof(int64_t), "strtol reads 64 bits");

// How far beyond its beginning a number is looked at, whatever stands there.
inline constexpr std::size_t kNumberLookAhead = 17;

inline uint64_t load_eight(const char* at)
{
    uint64_t bytes = 0;
    std::memcpy(&bytes, at, sizeof bytes);
    return bytes;
}

// How many of the eight characters, from the first on, are decimal digits. The sum may carry out of
// a character that is none, but only into later ones.
inline std::size_t leading_digits(uint64_t characters)
{
    constexpr uint64_t kHighNibbles = 0xF0F0F0F0F0F0F0F0U;
    const uint64_t no_digit = ((characters & kHighNibbles) |
                               (((characters + 0x0606060606060606U) & kHighNibbles) >> 4U)) ^
                              0x3333333333333333U;
    return static_cast<std::size_t>(std::countr_zero(no_digit)) / 8;
}

// The number of the first `count` characters, 1 to 8, all of them digits: pairs, then fours, then
// all eight are put together at once.
inline uint64_t value_of_digits(uint64_t characters, std::size_t count)
{
    uint64_t value = (characters & 0x0F0F0F0F0F0F0F0FU) << (64 - 8 * count);
    value = (value * (10 * 0x100U + 1)) >> 8U;
    value = ((value & 0x00FF00FF00FF00FFU) * (100 * 0x10000U + 1)) >> 16U;
    return ((value & 0x0000FFFF0000FFFFU) * (10'000 * 0x100000000U + 1)) >> 32U;
}

inline constexpr std::array<uint64_t, 8> kPowersOfTen{1,      10,      100,       1'000,
                                                      10'000, 100'000, 1'000'000, 10'000'000};

// The number that fills `length` characters: an optional "-" and 1 to 15 decimal digits. Nothing
// for the many other forms that the conversions accept.
inline std::optional<int64_t> plain_decimal(const char* at, std::size_t length)
{
    if (length == 1) {  // as most are
        const unsigned digit = static_cast<unsigned char>(*at) - unsigned{'0'};
        return digit < 10 ? std::optional<int64_t>{digit} : std::nullopt;
    }
    const std::size_t sign = *at == '-' ? 1 : 0;
    const char* const digits = at + sign;
    const std::size_t count = length - sign;
    if (length <= sign || count > 15) {
        return std::nullopt;
    }
    const uint64_t characters = load_eight(digits);
    const std::size_t first = std::min<std::size_t>(count, 8);
    if (leading_digits(characters) < first) {
        return std::nullopt;
    }
    uint64_t value = value_of_digits(characters, first);
    if (count > 8) {
        const uint64_t others = load_eight(digits + 8);
        if (leading_digits(others) < count - 8) {
            return std::nullopt;
        }
        value = value * kPowersOfTen[count - 8] + value_of_digits(others, count - 8);
    }
    const auto magnitude = static_cast<int64_t>(value);
    return sign != 0 ? -magnitude : magnitude;
}

// The value of each character as a hexadecimal digit; 16 for the others.
inline constexpr auto kHexadecimalDigits = [] {
    std::array<uint8_t, 256> values{};
    values.fill(16);
    for (std::size_t digit = 0; digit < 16; ++digit) {
        values[static_cast<unsigned char>("0123456789abcdef"[digit])] = static_cast<uint8_t>(digit);
        values[static_cast<unsigned char>("0123456789ABCDEF"[digit])] = static_cast<uint8_t>(digit);
    }
    return values;
}();

// The number that fills `length` characters: 1 to 8 hexadecimal digits. Nothing for other forms.
inline std::optional<int64_t> plain_hexadecimal(const char* at, std::size_t length)
{
    if (length == 0 || length > 8) {
        return std::nullopt;
    }
    int64_t value = 0;
    for (std::size_t index = 0; index < length; ++index) {
        const uint8_t digit = kHexadecimalDigits[static_cast<unsigned char>(at[index])];
        if (digit == 16) {
            return std::nullopt;
        }
        value = value * 16 + digit;
    }
    return value;
}

}  // namespace nimba
