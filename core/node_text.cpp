// SPDX-License-Identifier: MIT
// Searching and copying in the text of a node.
#include "nimba_mgmt_interface.h"

#include <algorithm>
#include <cstring>
#include <string_view>

int32_t find_str_in_buffer(const char* buffer, int32_t length, const char* key)
{
    const std::string_view wanted{key};
    if (wanted.empty() || length <= 0 || wanted.size() >= static_cast<std::size_t>(length)) {
        return -1;
    }
    // The last start position is not tried, that is, the last byte is not searched: callers pass
    // the size of a buffer and rely on it.
    const std::string_view searched{buffer, static_cast<std::size_t>(length) - 1};
    const std::size_t position = searched.find(wanted);
    return position == std::string_view::npos ? -1 : static_cast<int32_t>(position + wanted.size());
}

uint32_t safe_str_copy_till_return(char* destination, const char* source, uint64_t size)
{
    const std::size_t count = std::min<std::size_t>(size - 1, std::strcspn(source, "\n"));
    std::memmove(destination, source, count);
    destination[count] = '\0';
    return static_cast<uint32_t>(count + 1);
}
