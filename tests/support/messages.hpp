// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace nimba::test {

using Texts = std::vector<std::string>;

inline Texts kept_messages;

// A print callback that keeps every message as it came.
inline int keep_message(const char* text, ...)
{
    kept_messages.emplace_back(text);
    return 0;
}

// The messages since the last call, in order.
inline Texts take_messages()
{
    return std::exchange(kept_messages, {});
}

}  // namespace nimba::test
