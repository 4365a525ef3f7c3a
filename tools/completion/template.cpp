// SPDX-License-Identifier: MIT
#include "tools/completion/template.hpp"

#include <fmt/core.h>

#include <algorithm>

namespace nimba::completion {

std::string fill(std::string_view text, std::initializer_list<Filling> fillings)
{
    std::string filled;
    while (!text.empty()) {
        const auto* const filling = std::ranges::find_if(
            fillings, [text](const Filling& known) { return text.starts_with(known.mark); });
        filled += filling == fillings.end() ? text.substr(0, 1) : filling->text;
        text.remove_prefix(filling == fillings.end() ? 1 : filling->mark.size());
    }
    return filled;
}

std::string function_name(std::string_view tool)
{
    std::string name{tool};
    std::ranges::replace(name, '-', '_');
    return name;
}

std::string quoted(std::string_view text)
{
    constexpr std::string_view kPlain =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_./:=";
    if (!text.empty() && text.find_first_not_of(kPlain) == std::string_view::npos) {
        return std::string{text};
    }
    return fmt::format("'{}'", fill(text, {{"'", "'\\''"}}));
}

}  // namespace nimba::completion
