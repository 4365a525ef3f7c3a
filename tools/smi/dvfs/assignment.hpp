// SPDX-License-Identifier: MIT
// Settings with the values that they shall have.
#pragma once

#include "tools/smi/dvfs/field.hpp"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace nimba::smi {

struct Assignment {
    const DvfsField* field = nullptr;  // never null
    int64_t value = 0;                 // in the field's range

    bool operator==(const Assignment&) const = default;
};

// The assignment that a name and a text stand for, or what is wrong with them: there is no such
// field, it can only be read, or the value is none of its own.
std::variant<Assignment, std::string> make_assignment(std::string_view name,
                                                      std::string_view value);

// The same for "FIELD=VALUE".
std::variant<Assignment, std::string> parse_assignment(std::string_view text);

// In the order in which the library writes the fields.
std::vector<Assignment> in_order(std::vector<Assignment> assignments);

// The assignments as one text for a worker, and back; nothing when the text is none.
std::string encode_assignments(std::span<const Assignment> assignments);
std::optional<std::vector<Assignment>> decode_assignments(std::string_view text);

}  // namespace nimba::smi
