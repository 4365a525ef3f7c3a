// SPDX-License-Identifier: MIT
// The power and DVFS settings by name: what users type and see, and what the driver is told.
#pragma once

#include "nimba_mgmt_interface.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace nimba::smi {

enum class FieldKind : uint8_t {
    kWord16,  // 0 to 0xffff
    kWord32,  // 0 to 0xffffffff
    kSigned,  // a signed number of 32 bits
    kLevel,   // one of the DVFS levels
};

struct DvfsField {
    std::string_view name;    // "power_gating_3d"
    const char* node;         // of the driver's info directory
    FieldKind kind;           // which values there are, and how they are shown
    std::size_t offset;       // in DvfsRegisterState
    std::string_view prefix;  // what stands before the value in the line that sets it
    bool writable = true;
};

// All of them, in the order in which the library writes them; behind those the ones that can only
// be read.
std::span<const DvfsField> dvfs_fields();

// The field of that name; null without one.
const DvfsField* find_field(std::string_view name);

// The place of a field in dvfs_fields.
std::size_t index_of(const DvfsField& field);

// The value that a text stands for: decimal, for words also hexadecimal as "0x1f", for the level
// also its name. Nothing when it is none, or beyond the field's range.
std::optional<int64_t> parse_field_value(const DvfsField& field, std::string_view text);

// What parse_field_value takes: "a number from 0 to 0xffff".
const char* value_form(const DvfsField& field);

// The value as it is shown, which parse_field_value takes: "0x1f", "-5", "performance".
std::string value_text(const DvfsField& field, int64_t value);

// The value as it is shown; "not available" for one that the driver does not give.
std::string value_text(const DvfsField& field, const std::optional<int64_t>& value);

// The line that sets the field in its node, without its newline.
std::string command_line_of(const DvfsField& field, int64_t value);

// The field's value in a record.
int64_t value_in(const DvfsRegisterState& state, const DvfsField& field);
void set_value(DvfsRegisterState& state, const DvfsField& field, int64_t value);

}  // namespace nimba::smi
