// SPDX-License-Identifier: MIT
#include "fuzz/support/entry_names.hpp"

#include "fuzz/support/input.hpp"

#include <algorithm>
#include <set>

namespace nimba::fuzz {
namespace {

constexpr std::size_t kLongestName = 240;  // leaves room for what makes a name different

std::string name_of(std::string_view text, std::size_t entry)
{
    std::string name{text};
    std::erase(name, '/');
    std::ranges::replace(name, '\0', '\n');
    name.resize(std::min(name.size(), kLongestName));
    return name.empty() || name == "." || name == ".." ? std::to_string(entry) : name;
}

}  // namespace

std::vector<std::string> numbered_names(std::size_t count)
{
    std::vector<std::string> names;
    for (std::size_t entry = 0; entry < count; ++entry) {
        names.push_back(std::to_string(entry));
    }
    return names;
}

std::vector<std::string> names_of(std::span<const std::string_view> texts)
{
    std::vector<std::string> names;
    std::set<std::string> taken;
    for (const std::string_view text : texts) {
        std::string name = name_of(text, names.size());
        while (!taken.insert(name).second) {
            name += '_';
        }
        names.push_back(name);
    }
    return names;
}

std::vector<std::string> take_names(std::span<std::string_view> texts)
{
    std::vector<std::string_view> lines;
    for (std::string_view& text : texts) {
        lines.push_back(take_line(text));
    }
    return names_of(lines);
}

}  // namespace nimba::fuzz
