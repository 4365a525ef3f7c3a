// SPDX-License-Identifier: MIT
#include "alloc/allocation_text.hpp"

#include "alloc/key_value.hpp"

#include <algorithm>
#include <optional>

namespace nimba {
namespace {

enum class Conversion { kLowBits, kHandle, kDevice };

struct Field {
    std::string_view key;  // with the "="
    int32_t _GFX_ALLOCATION_INFO::*member;
    Conversion conversion = Conversion::kLowBits;
};

constexpr std::array kFields{
    Field{"width=", &_GFX_ALLOCATION_INFO::width},
    Field{"height=", &_GFX_ALLOCATION_INFO::height},
    Field{"pitch=", &_GFX_ALLOCATION_INFO::pitch},
    Field{"bit_cnt=", &_GFX_ALLOCATION_INFO::bit_cnt},
    Field{"hw_format=", &_GFX_ALLOCATION_INFO::hw_format},
    Field{"secured=", &_GFX_ALLOCATION_INFO::secured},
    Field{"tile=", &_GFX_ALLOCATION_INFO::tile},
    Field{"segmentid=", &_GFX_ALLOCATION_INFO::segmentid},
    Field{"gpu_virt_addr=", &_GFX_ALLOCATION_INFO::gpu_virt_addr},
    Field{"bl_slot_index=", &_GFX_ALLOCATION_INFO::bl_slot_index},
    Field{"compress_format=", &_GFX_ALLOCATION_INFO::compress_format},
    Field{"handle=", &_GFX_ALLOCATION_INFO::handle, Conversion::kHandle},
    Field{"device=", &_GFX_ALLOCATION_INFO::device, Conversion::kDevice},
    Field{"size=", &_GFX_ALLOCATION_INFO::size},
    Field{"cpu_visible=", &_GFX_ALLOCATION_INFO::cpu_visible},
    Field{"cache_type=", &_GFX_ALLOCATION_INFO::cache_type},
    Field{"pool_type=", &_GFX_ALLOCATION_INFO::pool_type},
    Field{"at_type=", &_GFX_ALLOCATION_INFO::at_type},
    Field{"imported=", &_GFX_ALLOCATION_INFO::imported},
    Field{"fb_offset=", &_GFX_ALLOCATION_INFO::fb_offset},
    Field{"share=", &_GFX_ALLOCATION_INFO::share},
};

// Every number of so many digits fits 63 bits.
constexpr std::size_t most_digits(unsigned base)
{
    return base == 10 ? 18 : 15;
}

// The value of a digit in base 10 or 16; `base` or more for other characters.
constexpr unsigned digit_value(char character, unsigned base)
{
    const unsigned decimal = static_cast<unsigned char>(character) - unsigned{'0'};
    if (base == 10 || decimal < 10) {
        return decimal;
    }
    const unsigned letter = (static_cast<unsigned char>(character) | 0x20U) - unsigned{'a'};
    return letter < 6 ? letter + 10 : base;
}

struct PlainNumber {
    int64_t value;
    std::size_t length;
};

// The number that fills the rest of the line that `text` begins with: an optional "-", a number of
// digits that certainly fits, and the newline. Nothing for the many other forms that the
// conversions accept.
template <unsigned base>
std::optional<PlainNumber> plain_number(std::string_view text)
{
    const std::size_t sign = text.starts_with('-') ? 1 : 0;
    const std::size_t limit = std::min(text.size(), sign + most_digits(base));
    std::size_t length = sign;
    uint64_t value = 0;
    for (; length < limit; ++length) {
        const unsigned digit = digit_value(text[length], base);
        if (digit >= base) {
            break;
        }
        value = value * base + digit;
    }
    if (length == sign || length == text.size() || text[length] != '\n') {
        return std::nullopt;
    }
    const auto magnitude = static_cast<int64_t>(value);
    return PlainNumber{sign != 0 ? -magnitude : magnitude, length};
}

bool fits_32_bits(int64_t value)
{
    return value == static_cast<int32_t>(value);
}

std::size_t field_named(std::string_view key)
{
    const auto field = std::ranges::find_if(kFields, [&](const Field& candidate) {
        return candidate.key.size() == key.size() + 1 && candidate.key.starts_with(key);
    });
    return static_cast<std::size_t>(field - kFields.begin());
}

}  // namespace

void AllocationParser::begin()
{
    record_ = {};
    line_ = 0;
}

void AllocationParser::add(std::string_view lines)
{
    while (!lines.empty()) {
        const std::size_t expected = add_expected_line(lines);
        lines.remove_prefix(expected > 0 ? expected : add_any_line(lines));
        ++line_;
    }
}

int AllocationParser::base_of(std::size_t field) const
{
    return kFields[field].conversion == Conversion::kHandle ? 16 : device_base_;
}

std::size_t AllocationParser::add_expected_line(std::string_view text)
{
    if (line_ >= expected_.size() || expected_[line_] == kNoField) {
        return 0;
    }
    const Field& field = kFields[expected_[line_]];
    if (!text.starts_with(field.key)) {
        return 0;
    }
    const std::string_view value = text.substr(field.key.size());
    const bool low_bits = field.conversion == Conversion::kLowBits;
    const auto number = low_bits || base_of(expected_[line_]) == 10 ? plain_number<10>(value)
                                                                    : plain_number<16>(value);
    if (!number || (!low_bits && !fits_32_bits(number->value))) {
        return 0;
    }
    record_.*field.member = static_cast<int32_t>(number->value);
    return field.key.size() + number->length + 1;
}

std::size_t AllocationParser::add_any_line(std::string_view text)
{
    const std::size_t newline = text.find('\n');
    const std::string_view line =
        text.substr(0, newline == std::string_view::npos ? newline : newline + 1);
    const auto parts = split_allocation_line(line);
    const std::size_t index = parts ? field_named(parts->key) : kFields.size();
    if (index < kFields.size()) {
        const Field& field = kFields[index];
        record_.*field.member = field.conversion == Conversion::kLowBits
                                    ? low_bits_of_number(parts->value)
                                    : number_in_range(parts->value, base_of(index));
    }
    if (line_ < expected_.size()) {
        expected_[line_] = index < kFields.size() ? static_cast<uint8_t>(index) : kNoField;
    }
    return line.size();
}

}  // namespace nimba
