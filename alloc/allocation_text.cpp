// SPDX-License-Identifier: MIT
#include "alloc/allocation_text.hpp"

#include "alloc/key_value.hpp"
#include "core/plain_number.hpp"

#include <algorithm>

namespace nimba {
namespace {

enum class Conversion { kLowBits, kHandle, kDevice };

// The beginning of a line, as two times eight bytes and which of them count.
struct Pattern {
    std::array<uint64_t, 2> bytes{};
    std::array<uint64_t, 2> mask{};

    constexpr explicit Pattern(std::string_view text)
    {
        for (std::size_t index = 0; index < text.size(); ++index) {
            const std::size_t shift = index % 8 * 8;
            bytes.at(index / 8) |= uint64_t{static_cast<unsigned char>(text[index])} << shift;
            mask.at(index / 8) |= uint64_t{0xFF} << shift;
        }
    }

    [[nodiscard]] bool matches(const char* text) const
    {
        return (((load_eight(text) ^ bytes[0]) & mask[0]) |
                ((load_eight(text + 8) ^ bytes[1]) & mask[1])) == 0;
    }
};

constexpr std::size_t kPatternLookAhead = 16;

struct Field {
    std::string_view key;  // with the "="
    int32_t _GFX_ALLOCATION_INFO::*member;
    Conversion conversion = Conversion::kLowBits;
    Pattern pattern{key};
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

// How far beyond its beginning a line is looked at, also where the text ends before.
constexpr std::size_t kLookAhead = kPatternLookAhead + kNumberLookAhead;

bool fits_32_bits(int64_t value)
{
    return value == static_cast<int32_t>(value);
}

// The length of the line whose value begins at `value`, as far as it is looked at.
uint8_t line_length(const char* text, std::size_t value)
{
    std::size_t end = value;
    while (end + 1 < kLookAhead && text[end] != '\n') {
        ++end;
    }
    return static_cast<uint8_t>(end + 1);
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
    const std::string_view rest = add_lines(lines, kLookAhead);
    // The last lines are looked at in a copy, behind which there is something to look at.
    std::array<char, 2 * kLookAhead> copy{};
    std::ranges::copy(rest, copy.begin());
    add_lines({copy.data(), rest.size()}, 0);
}

std::string_view AllocationParser::add_lines(std::string_view text, std::size_t rest)
{
    std::size_t line = line_;
    while (text.size() > rest) {
        const std::size_t expected = add_expected_line(text.data(), line);
        text.remove_prefix(expected > 0 ? expected : add_any_line(text, line));
        ++line;
    }
    line_ = line;
    return text;
}

int AllocationParser::base_of(std::size_t field) const
{
    return kFields[field].conversion == Conversion::kHandle ? 16 : device_base_;
}

std::size_t AllocationParser::add_expected_line(const char* text, std::size_t line)
{
    if (line >= expected_.size() || expected_[line].field == kNoField) {
        return 0;
    }
    Expected& expected = expected_[line];
    const Field& field = kFields[expected.field];
    if (!field.pattern.matches(text)) {
        return 0;
    }
    if (text[expected.length - 1] != '\n') {
        expected.length = line_length(text, field.key.size());
        if (text[expected.length - 1] != '\n') {
            return 0;
        }
    }
    const char* const value = text + field.key.size();
    const std::size_t characters = expected.length - field.key.size() - 1;
    const bool low_bits = field.conversion == Conversion::kLowBits;
    const auto number = low_bits || base_of(expected.field) == 10
                            ? plain_decimal(value, characters)
                            : plain_hexadecimal(value, characters);
    if (!number || (!low_bits && !fits_32_bits(*number))) {
        return 0;
    }
    record_.*field.member = static_cast<int32_t>(*number);
    // The next line begins where it was expected, if this one was as long as expected: the
    // processor need not wait for its end to be found.
    return expected.length;
}

std::size_t AllocationParser::add_any_line(std::string_view text, std::size_t line)
{
    const std::size_t newline = text.find('\n');
    const std::string_view whole =
        text.substr(0, newline == std::string_view::npos ? newline : newline + 1);
    const auto parts = split_allocation_line(whole);
    const std::size_t index = parts ? field_named(parts->key) : kFields.size();
    if (index < kFields.size()) {
        const Field& field = kFields[index];
        record_.*field.member = field.conversion == Conversion::kLowBits
                                    ? low_bits_of_number(parts->value)
                                    : number_in_range(parts->value, base_of(index));
    }
    expect(line, index, whole.size());
    return whole.size();
}

void AllocationParser::expect(std::size_t line, std::size_t field, std::size_t length)
{
    if (line < expected_.size()) {
        expected_[line] = field < kFields.size()
                              ? Expected{static_cast<uint8_t>(field),
                                         static_cast<uint8_t>(std::min(length, kLookAhead))}
                              : Expected{};
    }
}

}  // namespace nimba
