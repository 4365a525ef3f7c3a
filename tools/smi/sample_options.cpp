// SPDX-License-Identifier: MIT
#include "tools/smi/sample_options.hpp"

#include "tools/smi/decimal.hpp"
#include "tools/smi/option_value.hpp"
#include "tools/smi/seconds.hpp"

#include <fmt/core.h>

#include <string>

namespace nimba::smi {
namespace {

constexpr double kShortestInterval = 0.1;
constexpr double kLongestInterval = 86400;
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
    add_value(
        command, "--interval", "SECONDS",
        fmt::format("seconds from {} to {}", kShortestInterval, kLongestInterval),
        "Take a sample this often (default: 1)",
        [](const std::string& text) {
            return parse_seconds(text, kShortestInterval, kLongestInterval);
        },
        store_interval);
}

}  // namespace nimba::smi
