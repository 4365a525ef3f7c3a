// SPDX-License-Identifier: MIT
// Options with a checked value.
#pragma once

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include <charconv>
#include <optional>
#include <string>
#include <string_view>

namespace nimba::smi {

// Adds an option whose value `parse` reads, a function that gives an optional. A value that it
// does not give is refused with "expected <expected>, got ...".
template <typename Parse, typename Store>
void add_value(CLI::App& app, const char* name, const char* type, const std::string& expected,
               const char* help, Parse parse, Store store)
{
    const auto fault = [parse, expected](const std::string& text) {
        return parse(text) ? std::string{} : fmt::format("expected {}, got \"{}\"", expected, text);
    };
    app.add_option_function<std::string>(
           name, [parse, store](const std::string& text) { store(*parse(text)); }, help)
        ->type_name(type)
        ->check(CLI::Validator{fault, ""});
}

// The decimal number that all of `text` spells, when it is from `smallest` to `largest`.
template <typename Number>
std::optional<Number> parse_number(std::string_view text, Number smallest, Number largest)
{
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool whole = error == std::errc{} && end == text.data() + text.size();
    return whole && number >= smallest && number <= largest ? std::optional(number) : std::nullopt;
}

}  // namespace nimba::smi
