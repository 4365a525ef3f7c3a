// SPDX-License-Identifier: MIT
// The adapters at one time: the model of the commands that show samples.
#pragma once

#include "tools/smi/exit_status.hpp"
#include "tools/smi/worker/payload.hpp"

#include <chrono>
#include <vector>

namespace nimba::smi {

// `Content`: what a command shows of an adapter.
template <typename Content>
struct Snapshot {
    struct Entry {
        SlotIdentity adapter;
        Content content;
    };

    std::chrono::system_clock::time_point time;
    std::vector<Entry> adapters;  // those that could be read, in slot order
    std::vector<Problem> problems;
};

}  // namespace nimba::smi
