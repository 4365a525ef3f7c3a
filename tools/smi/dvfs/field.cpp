// SPDX-License-Identifier: MIT
#include "tools/smi/dvfs/field.hpp"

#include "tools/smi/decimal.hpp"
#include "tools/smi/dvfs/level.hpp"
#include "tools/smi/pagetable/number.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

namespace nimba::smi {
namespace {

constexpr const char* kGating = "pwm_wait_count";
constexpr const char* kParameters = "dvfs_control_params";
constexpr const char* kClockAndVoltage = "dvfs_clk_voltage";

using enum FieldKind;
using State = DvfsRegisterState;

constexpr std::array kFields{
    DvfsField{"power_mode", "power_mode", kWord32, offsetof(State, power_mode), "0x"},
    DvfsField{"power_gating_3d", kGating, kWord16, offsetof(State, power_gating_3d), "0 0 "},
    DvfsField{"power_gating_vcp", kGating, kWord16, offsetof(State, power_gating_vcp), "0 1 "},
    DvfsField{"power_gating_vpp", kGating, kWord16, offsetof(State, power_gating_vpp), "0 2 "},
    DvfsField{"clock_gating_3d", kGating, kWord16, offsetof(State, clock_gating_3d), "1 0 "},
    DvfsField{"clock_gating_vcp", kGating, kWord16, offsetof(State, clock_gating_vcp), "1 1 "},
    DvfsField{"clock_gating_vpp", kGating, kWord16, offsetof(State, clock_gating_vpp), "1 2 "},
    DvfsField{"dvfs_mode", "dvfs_mode", kWord32, offsetof(State, dvfs_mode), "0x"},
    DvfsField{"dvfs_level", "dvfs_level", kLevel, offsetof(State, dvfs_level), ""},
    DvfsField{"gfx_check_size", kParameters, kWord32, offsetof(State, gfx_check_size), "0 0 "},
    DvfsField{"vcp0_check_size", kParameters, kWord32, offsetof(State, vcp0_check_size), "1 0 "},
    DvfsField{"vcp1_check_size", kParameters, kWord32, offsetof(State, vcp1_check_size), "2 0 "},
    DvfsField{"vpp_check_size", kParameters, kWord32, offsetof(State, vpp_check_size), "3 0 "},
    DvfsField{"gfx_high_threshold", kParameters, kWord32, offsetof(State, gfx_high_threshold),
              "0 1 "},
    DvfsField{"vcp0_high_threshold", kParameters, kWord32, offsetof(State, vcp0_high_threshold),
              "1 1 "},
    DvfsField{"vcp1_high_threshold", kParameters, kWord32, offsetof(State, vcp1_high_threshold),
              "2 1 "},
    DvfsField{"vpp_high_threshold", kParameters, kWord32, offsetof(State, vpp_high_threshold),
              "3 1 "},
    DvfsField{"gfx_low_threshold", kParameters, kWord32, offsetof(State, gfx_low_threshold),
              "0 2 "},
    DvfsField{"vcp0_low_threshold", kParameters, kWord32, offsetof(State, vcp0_low_threshold),
              "1 2 "},
    DvfsField{"vcp1_low_threshold", kParameters, kWord32, offsetof(State, vcp1_low_threshold),
              "2 2 "},
    DvfsField{"vpp_low_threshold", kParameters, kWord32, offsetof(State, vpp_low_threshold),
              "3 2 "},
    DvfsField{"gfx_clock", kClockAndVoltage, kSigned, offsetof(State, gfx_clock), "c 0 "},
    DvfsField{"gfx_voltage", kClockAndVoltage, kSigned, offsetof(State, gfx_voltage), "v 0 "},
    DvfsField{"video_clock", "vclk", kSigned, offsetof(State, video_clock), "", false},
    DvfsField{"memory_clock", "mclk", kSigned, offsetof(State, memory_clock), "", false},
};

std::optional<int64_t> level_named(std::string_view text)
{
    const auto* const level = std::ranges::find(kLevelNames, text);
    return level == kLevelNames.end() ? std::nullopt : std::optional(level - kLevelNames.begin());
}

std::optional<int64_t> parse_word(std::string_view text, uint64_t largest)
{
    const auto number =
        text.starts_with("0x") ? hexadecimal_in(text) : parse_number<uint64_t>(text, 0, largest);
    return number && *number <= largest ? std::optional(static_cast<int64_t>(*number))
                                        : std::nullopt;
}

template <typename Number>
Number number_at(const State& state, std::size_t offset)
{
    Number number{};
    std::memcpy(&number, reinterpret_cast<const char*>(&state) + offset, sizeof number);
    return number;
}

template <typename Number>
void put_number(State& state, std::size_t offset, int64_t value)
{
    const auto number = static_cast<Number>(value);
    std::memcpy(reinterpret_cast<char*>(&state) + offset, &number, sizeof number);
}

}  // namespace

std::span<const DvfsField> dvfs_fields()
{
    return kFields;
}

const DvfsField* find_field(std::string_view name)
{
    const auto* const field = std::ranges::find(kFields, name, &DvfsField::name);
    return field == kFields.end() ? nullptr : field;
}

std::size_t index_of(const DvfsField& field)
{
    return static_cast<std::size_t>(&field - kFields.data());
}

std::optional<int64_t> parse_field_value(const DvfsField& field, std::string_view text)
{
    switch (field.kind) {
        case kWord16:
            return parse_word(text, std::numeric_limits<uint16_t>::max());
        case kWord32:
            return parse_word(text, std::numeric_limits<uint32_t>::max());
        case kSigned:
            return parse_number<int64_t>(text, std::numeric_limits<int32_t>::min(),
                                         std::numeric_limits<int32_t>::max());
        case kLevel:
            break;
    }
    const auto level = level_named(text);
    return level ? level : parse_number<int64_t>(text, 0, kLevelNames.size() - 1);
}

const char* value_form(const DvfsField& field)
{
    switch (field.kind) {
        case kWord16:
            return "a number from 0 to 0xffff";
        case kWord32:
            return "a number from 0 to 0xffffffff";
        case kSigned:
            return "a decimal number from -2147483648 to 2147483647";
        case kLevel:
            break;
    }
    return "balance, lowpower, performance, or 0 to 2";
}

std::string value_text(const DvfsField& field, int64_t value)
{
    switch (field.kind) {
        case kWord16:
        case kWord32:
            return fmt::format("{:#x}", value);
        case kSigned:
            return std::to_string(value);
        case kLevel:
            break;
    }
    return std::string{kLevelNames.at(static_cast<std::size_t>(value))};
}

std::string value_text(const DvfsField& field, const std::optional<int64_t>& value)
{
    return value ? value_text(field, *value) : "not available";
}

std::string command_line_of(const DvfsField& field, int64_t value)
{
    switch (field.kind) {
        case kWord16:
            // The library widens the field's 16 bits with their sign.
            return fmt::format("{}{:x}", field.prefix,
                               static_cast<uint32_t>(static_cast<int16_t>(value)));
        case kWord32:
            return fmt::format("{}{:x}", field.prefix, value);
        case kSigned:
        case kLevel:
            break;
    }
    return fmt::format("{}{}", field.prefix, value_text(field, value));
}

int64_t value_in(const DvfsRegisterState& state, const DvfsField& field)
{
    switch (field.kind) {
        case kWord16:
            return number_at<uint16_t>(state, field.offset);
        case kSigned:
            return number_at<int32_t>(state, field.offset);
        case kWord32:
        case kLevel:
            break;
    }
    return number_at<uint32_t>(state, field.offset);
}

void set_value(DvfsRegisterState& state, const DvfsField& field, int64_t value)
{
    if (field.kind == kWord16) {
        put_number<uint16_t>(state, field.offset, value);
    } else {
        put_number<uint32_t>(state, field.offset, value);
    }
}

}  // namespace nimba::smi
