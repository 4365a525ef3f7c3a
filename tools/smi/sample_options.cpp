// SPDX-License-Identifier: MIT
#include "tools/smi/sample_options.hpp"

#include "tools/smi/decimal.hpp"
#include "tools/smi/option_value.hpp"

#include <fmt/core.h>

#include <string>

namespace nimba::smi {
namespace {

constexpr SecondsRange kIntervals{.shortest = 0.1};
constexpr uint64_t kMostSamples = 100'000;

}  // namespace

void add_sample_options(CLI::App& command, const char* samples_help,
                        const std::function<void(uint64_t)>& store_samples,
                        const std::function<void(std::chrono::milliseconds)>& store_interval)
{
    add_value(
        command, "--samples", "N", fmt::format("a number of samples from 1 to {}", kMostSamples),
        samples_help,
        [](const std::string& text) { return parse_number<uint64_t>(text, 1, kMostSamples); },
        store_samples);
    add_seconds(command, "--interval", "Take a sample this often (default: 1)", store_interval,
                kIntervals);
}

}  // namespace nimba::smi
