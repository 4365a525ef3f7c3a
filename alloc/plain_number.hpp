// SPDX-License-Identifier: MIT
// The numbers that a driver prints, eight digits at a time.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace nimba {

static_assert(std::endian::native == std::endian::little, "the records are little-endian");

// What stands at a line's beginning of a number.
struct PlainNumber {
    int64_t value;
    std::size_t length;  // sign included; 0: it is not plain
};

// How far the functions look behind where they start, whatever stands there.
inline constexpr std::size_t kNumberLookAhead = 18;

inline uint64_t load_eight(const char* at)
{
    uint64_t bytes = 0;
    std::memcpy(&bytes, at, sizeof bytes);
    return bytes;
}

// How many of the eight characters, from the first on, are decimal digits.
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

// An optional "-", 1 to 15 decimal digits and a newline.
inline PlainNumber plain_decimal(const char* at)
{
    constexpr std::array<uint64_t, 8> kPowers{1,      10,      100,       1'000,
                                              10'000, 100'000, 1'000'000, 10'000'000};
    const std::size_t sign = *at == '-' ? 1 : 0;
    const char* const digits = at + sign;
    uint64_t characters = load_eight(digits);
    std::size_t count = leading_digits(characters);
    uint64_t value = 0;
    if (count == 8) {
        value = value_of_digits(characters, count);
        characters = load_eight(digits + 8);
        const std::size_t more = leading_digits(characters);
        if (more == 8) {
            return {0, 0};
        }
        if (more > 0) {
            value = value * kPowers[more] + value_of_digits(characters, more);
        }
        count += more;
    } else if (count > 0) {
        value = value_of_digits(characters, count);
    }
    if (count == 0 || digits[count] != '\n') {
        return {0, 0};
    }
    const auto magnitude = static_cast<int64_t>(value);
    return {sign != 0 ? -magnitude : magnitude, sign + count};
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

// 1 to 8 hexadecimal digits and a newline.
inline PlainNumber plain_hexadecimal(const char* at)
{
    int64_t value = 0;
    std::size_t count = 0;
    while (count < 8) {
        const uint8_t digit = kHexadecimalDigits[static_cast<unsigned char>(at[count])];
        if (digit == 16) {
            break;
        }
        value = value * 16 + digit;
        ++count;
    }
    return {value, at[count] == '\n' ? count : 0};
}

}  // namespace nimba
