// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/number.hpp"

#include <charconv>

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
    return number_in<uint64_t>(text.substr(text.starts_with("0x") ? 2 : 0), 16);
}

}  // namespace nimba::smi
