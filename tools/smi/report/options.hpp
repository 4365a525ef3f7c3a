// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace nimba::smi {

struct ReportOptions {
    std::string file{};
    std::optional<std::string> capture{};  // the archive to tell of; without it, this machine
    std::optional<uint64_t> samples{};     // of this machine
    std::optional<std::chrono::milliseconds> interval{};  // between their beginnings
};

}  // namespace nimba::smi
