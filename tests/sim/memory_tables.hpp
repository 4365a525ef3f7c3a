// SPDX-License-Identifier: MIT
// Parts of machine files that describe video memory.
#pragma once

#include "machine_of.hpp"

#include <string>

namespace nimba::sim::test {

// A Nimba K3 as card 2, with these keys and tables.
inline std::string adapter(const std::string& keys, const std::string& tables)
{
    return "[[adapter]]\nchip = \"nimba-k3\"\nbus_id = \"0000:01:00.0\"\ncard = 2\n" + keys + "\n" +
           tables;
}

inline constexpr const char* kTwoContexts = R"(
[[adapter.context]]
pid = 4100001
handle = 0x1f

[[adapter.context]]
entry = 12
pid = 4100002
handle = 0x20
further = { process = "a b", flags = "0x3" }
)";

}  // namespace nimba::sim::test
