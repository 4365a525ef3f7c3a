// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/number.hpp"

#include <charconv>
#include <cstddef>

namespace nimba::smi {
namespace {

template <typename Number>
std::optional<Number> number_in(std::string_view text, int base)
{
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [behind, error] = std::from_chars(text.data(), end, number, base);
    return error == std::errc{} && behind == end ? std::optional(number) : std::nullopt;
}

}  // namespace

std::optional<int64_t> decimal_in(std::string_view text)
{
    return number_in<int64_t>(text, 10);
}

std::optional<uint64_t> hexadecimal_in(std::string_view text)
{
    constexpr std::size_t kMostDigits = 16;
    const std::string_view digits = text.substr(text.starts_with("0x") ? 2 : 0);
    return digits.size() <= kMostDigits ? number_in<uint64_t>(digits, 16) : std::nullopt;
}

}  // namespace nimba::smi
