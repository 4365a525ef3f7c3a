// SPDX-License-Identifier: MIT
#include "tools/smi/report/bound.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace nimba::smi::page {
namespace {

constexpr std::array<std::size_t, 3> kMostInList{200, 100, 4};  // by how many lists a list is in

// NOLINTNEXTLINE(misc-no-recursion): as deep as the documents of the commands are.
void bound_in(Document& value, std::size_t level)
{
    if (!value.is_object()) {
        return;
    }
    std::vector<std::pair<std::string, std::size_t>> left_out;
    for (auto& item : value.items()) {
        Document& part = item.value();
        if (!part.is_array()) {
            bound_in(part, level);
            continue;
        }
        const std::size_t most = kMostInList[std::min(level, kMostInList.size() - 1)];
        if (part.size() > most) {
            left_out.emplace_back(item.key() + "_left_out", part.size() - most);
            part.erase(part.begin() + static_cast<std::ptrdiff_t>(most), part.end());
        }
        for (Document& element : part) {
            bound_in(element, level + 1);
        }
    }
    for (const auto& [key, count] : left_out) {
        value[key] = count;
    }
}

}  // namespace

void bound(Document& document)
{
    bound_in(document, 0);
}

}  // namespace nimba::smi::page
