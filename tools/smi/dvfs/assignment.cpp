// SPDX-License-Identifier: MIT
#include "tools/smi/dvfs/assignment.hpp"

#include <fmt/core.h>

#include <algorithm>

namespace nimba::smi {

std::variant<Assignment, std::string> make_assignment(std::string_view name, std::string_view value)
{
    const DvfsField* const field = find_field(name);
    if (field == nullptr) {
        return fmt::format("there is no field \"{}\"; nimba-smi dvfs get shows all", name);
    }
    if (!field->writable) {
        return fmt::format("{} can only be read", name);
    }
    const auto number = parse_field_value(*field, value);
    if (!number) {
        return fmt::format("{}: expected {}, got \"{}\"", name, value_form(*field), value);
    }
    return Assignment{field, *number};
}

std::variant<Assignment, std::string> parse_assignment(std::string_view text)
{
    const auto sign = text.find('=');
    if (sign == std::string_view::npos) {
        return fmt::format("expected FIELD=VALUE, got \"{}\"", text);
    }
    return make_assignment(text.substr(0, sign), text.substr(sign + 1));
}

std::vector<Assignment> in_order(std::vector<Assignment> assignments)
{
    std::ranges::sort(assignments, {}, [](const Assignment& a) { return index_of(*a.field); });
    return assignments;
}

std::string encode_assignments(std::span<const Assignment> assignments)
{
    std::string text;
    for (const Assignment& assignment : assignments) {
        text += fmt::format("{}{}={}", text.empty() ? "" : " ", assignment.field->name,
                            value_text(*assignment.field, assignment.value));
    }
    return text;
}

std::optional<std::vector<Assignment>> decode_assignments(std::string_view text)
{
    std::vector<Assignment> assignments;
    while (!text.empty()) {
        const auto end = std::min(text.find(' '), text.size());
        const auto parsed = parse_assignment(text.substr(0, end));
        const auto* const assignment = std::get_if<Assignment>(&parsed);
        if (assignment == nullptr) {
            return std::nullopt;
        }
        assignments.push_back(*assignment);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return assignments;
}

}  // namespace nimba::smi
