// SPDX-License-Identifier: MIT
#include "driver/command_text.hpp"

#include <fmt/format.h>

#include <charconv>
#include <system_error>

namespace nimba::sim {
namespace {

// A number is taken if it is written in the one way in which printf writes it.
template <typename Number>
std::optional<Number> take_number(std::string_view& rest, int base)
{
    Number number{};
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), number, base);
    if (error != std::errc{}) {
        return std::nullopt;
    }
    const std::string written = base == 16 ? fmt::format("{:x}", number) : fmt::to_string(number);
    if (rest.substr(0, static_cast<std::size_t>(end - rest.data())) != written) {
        return std::nullopt;
    }
    rest.remove_prefix(written.size());
    return number;
}

}  // namespace

bool take_word(std::string_view& rest, std::string_view word)
{
    if (!rest.starts_with(word)) {
        return false;
    }
    rest.remove_prefix(word.size());
    return true;
}

std::optional<uint32_t> take_hexadecimal(std::string_view& rest)
{
    return take_number<uint32_t>(rest, 16);
}

std::optional<int32_t> take_decimal(std::string_view& rest)
{
    return take_number<int32_t>(rest, 10);
}

std::optional<std::size_t> take_index(std::string_view& rest, std::size_t count)
{
    if (rest.size() < 2 || rest[1] != ' ' || rest[0] < '0') {
        return std::nullopt;
    }
    const auto index = static_cast<std::size_t>(rest[0] - '0');
    if (index >= count) {
        return std::nullopt;
    }
    rest.remove_prefix(2);
    return index;
}

std::optional<bool> switch_of(std::string_view command)
{
    const bool on = take_word(command, "1");
    if (!on && !take_word(command, "0")) {
        return std::nullopt;
    }
    take_word(command, "\n");
    return command.empty() ? std::optional{on} : std::nullopt;
}

}  // namespace nimba::sim
