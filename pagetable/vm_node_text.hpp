// SPDX-License-Identifier: MIT
// The text of an allocation's virtual-memory nodes.
#pragma once

#include <cstddef>
#include <string_view>

namespace nimba {

inline constexpr std::string_view kVmNodeMarker = "=====vm node info=====";

// Calls `take` with each block: from one marker to the next, or to the end. What stands before the
// first marker belongs to none.
template <typename Take>
void for_each_vm_node(std::string_view text, Take&& take)
{
    std::size_t begin = text.find(kVmNodeMarker);
    while (begin != std::string_view::npos) {
        const std::size_t end = text.find(kVmNodeMarker, begin + kVmNodeMarker.size());
        take(text.substr(begin, end - begin));
        begin = end;
    }
}

// The value behind `key`; empty without one.
std::string_view vm_node_value(std::string_view block, std::string_view key);

}  // namespace nimba
