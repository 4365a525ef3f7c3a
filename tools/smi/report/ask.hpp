// SPDX-License-Identifier: MIT
// Asks this machine for what a report tells.
#pragma once

#include "tools/smi/exit_status.hpp"
#include "tools/smi/options.hpp"
#include "tools/smi/report/content.hpp"

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace nimba::smi {
struct MachineSnapshot;
}

namespace nimba::smi::page {

// Is told what comes next.
using Progress = std::function<void(const std::string& what)>;

// A snapshot as an overview with bounded lists.
Document bounded_overview(const MachineSnapshot& snapshot);

// The documents of the commands that are asked once, with bounded lists. `problems` gets what they
// could not read, except what the doctor found, which its document tells. Once `patience` is over,
// no further one is asked.
Documents ask_documents(const Options& options, std::vector<Problem>& problems,
                        const Progress& progress,
                        std::optional<std::chrono::seconds> patience = std::nullopt);

// As many samples and all documents as the options ask for.
Content ask_machine(const Options& options, std::vector<Problem>& problems,
                    const Progress& progress);

}  // namespace nimba::smi::page
