// SPDX-License-Identifier: MIT
#include "tools/smi/prefer/lost_lines.hpp"

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

namespace nimba::smi {
namespace {

constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

std::string_view trimmed(std::string_view text)
{
    const auto first = std::min(text.find_first_not_of(kWhiteSpace), text.size());
    text.remove_prefix(first);
    return text.substr(0, text.find_last_not_of(kWhiteSpace) + 1);
}

std::string plain_form(std::string_view line)
{
    const auto equals = line.find('=');
    if (equals == std::string_view::npos || line.starts_with('[') || line.starts_with(';')) {
        return std::string{line};
    }
    return std::string{trimmed(line.substr(0, equals))}.append("=").append(
        trimmed(line.substr(equals + 1)));
}

std::vector<std::string> sorted_lines(std::string_view text)
{
    std::vector<std::string> lines;
    while (!text.empty()) {
        const auto end = std::min(text.find('\n'), text.size());
        if (const auto line = trimmed(text.substr(0, end)); !line.empty()) {
            lines.push_back(plain_form(line));
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    std::ranges::sort(lines);
    return lines;
}

}  // namespace

int lost_lines(std::string_view original, std::string_view rewritten)
{
    std::vector<std::string> lost;
    std::ranges::set_difference(sorted_lines(original), sorted_lines(rewritten),
                                std::back_inserter(lost));
    return static_cast<int>(lost.size());
}

}  // namespace nimba::smi
