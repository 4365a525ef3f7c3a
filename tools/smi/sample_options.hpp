// SPDX-License-Identifier: MIT
// What commands that take samples of the machine over time have in common.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

namespace CLI {
class App;
}

namespace nimba::smi {

// Adds --samples, which `samples_help` describes, and --interval.
void add_sample_options(CLI::App& command, const char* samples_help,
                        const std::function<void(uint64_t)>& store_samples,
                        const std::function<void(std::chrono::milliseconds)>& store_interval);

}  // namespace nimba::smi
