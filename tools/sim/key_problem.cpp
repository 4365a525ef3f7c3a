// SPDX-License-Identifier: MIT
#include "key_problem.hpp"

#include "machine_file_error.hpp"
#include "message.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace nimba::sim {
namespace {

// How a message shows the value that was found.
std::string shown(const toml::node& value)
{
    if (const auto* text = value.as_string()) {
        return quoted(text->get());
    }
    if (const auto* number = value.as_floating_point()) {
        return fmt::format("{}", number->get());
    }
    if (const auto* number = value.as_integer()) {
        return fmt::format("{}", number->get());
    }
    if (const auto* flag = value.as_boolean()) {
        return flag->get() ? "true" : "false";
    }
    if (value.is_array()) {
        return "a list";
    }
    return value.is_table() ? "a table" : "another kind of value";
}

}  // namespace

std::string one_of(std::span<const std::string_view> choices)
{
    return fmt::format("one of \"{}\"", fmt::join(choices, "\", \""));
}

std::string quoted(const std::string& text)
{
    return fmt::format("\"{}\"", without_control_characters(text));
}

void fail_key(const std::string& file, const toml::node& place, const std::string& key,
              const std::string& problem)
{
    const auto line = place.source().begin.line;  // 0: of a table that was not read from a file
    throw MachineFileError{fmt::format("{}{}: key '{}': {}", file,
                                       line == 0 ? "" : fmt::format(":{}", line), key, problem)};
}

void fail_expected(const std::string& file, const toml::node& value, const std::string& key,
                   const std::string& expected)
{
    fail_key(file, value, key, fmt::format("expected {}, got {}", expected, shown(value)));
}

}  // namespace nimba::sim
