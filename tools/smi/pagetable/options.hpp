// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/pagetable/split.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace nimba::smi {

// The levels of a tree down to its pages.
inline constexpr int kDepthOfPages = 3;

struct PageTableOptions {
    std::vector<int64_t> pids{};  // without any, all processes
    AddressSplit split{};

    // At most one of these; without any, the sums of each process.
    bool tree = false;
    std::optional<uint64_t> address{};  // to look up
    bool map = false;
    std::optional<std::string> svg{};  // file to draw; "-" is standard output

    std::optional<int> depth{};  // of the tree

    // Whether something else is asked for than the sums or the list of all entries.
    [[nodiscard]] bool has_view() const { return tree || address || map || svg; }
};

}  // namespace nimba::smi
