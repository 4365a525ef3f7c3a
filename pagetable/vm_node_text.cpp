// SPDX-License-Identifier: MIT
#include "pagetable/vm_node_text.hpp"

#include "nimba_mgmt_interface.h"

#include <algorithm>

namespace nimba {

std::string_view vm_node_value(std::string_view block, std::string_view key)
{
    const std::size_t position = block.find(key);
    if (position == std::string_view::npos) {
        return {};
    }
    // Behind "=" and the blank. Without a "=" the search's npos wraps around to 1; callers rely on
    // the value that begins there.
    const std::size_t begin = block.find('=', position) + 2;
    const std::size_t end = std::min(block.find('\n', position), block.size());
    return begin < end ? block.substr(begin, end - begin) : std::string_view{};
}

}  // namespace nimba

std::vector<std::string> split_VmNode_Info(const std::string& text)
{
    std::vector<std::string> blocks;
    nimba::for_each_vm_node(text, [&](std::string_view block) { blocks.emplace_back(block); });
    return blocks;
}

std::string extractValue(const std::string& text, const std::string& key)
{
    return std::string{nimba::vm_node_value(text, key)};
}
