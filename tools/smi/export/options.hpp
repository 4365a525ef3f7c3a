// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/export/collectors.hpp"
#include "tools/smi/export/listen_address.hpp"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

namespace nimba::smi {

// What "export" takes.
struct ExportOptions {
    std::optional<exporting::ListenAddress> listen{};  // without a face, loopback
    bool once = false;
    std::optional<std::string> textfile{};
    std::optional<std::chrono::milliseconds> interval{};  // from one text file to the next
    std::chrono::milliseconds deadline{2000};             // for each collector
    bool skip_denied = false;  // collectors that fail for want of permission are left out
    bool no_processes = false;
    std::size_t max_processes = 50;  // of an adapter
    exporting::CollectorSet without{};
};

}  // namespace nimba::smi
