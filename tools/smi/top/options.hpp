// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace nimba::smi {

// What "top" takes.
struct TopOptions {
    std::chrono::milliseconds interval{1000};  // from one sample to the next
    std::optional<uint64_t> count{};           // samples; without it, until the user ends it
    bool ascii = false;                        // draws with ASCII alone
};

}  // namespace nimba::smi
