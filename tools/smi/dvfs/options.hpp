// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/dvfs/assignment.hpp"

#include <cstdint>
#include <string>
#include <vector>

namespace nimba::smi {

enum class DvfsAction : uint8_t { kNone, kGet, kSet, kSave, kRestore };

struct DvfsOptions {
    DvfsAction action = DvfsAction::kNone;
    std::vector<const DvfsField*> fields{};  // to get, each once; without any, all
    std::vector<Assignment> assignments{};   // to set, each field once, in order
    bool dry_run = false;
    std::string file{};  // to save to or to restore; "-" is standard output or input
    bool force = false;  // restore the state of another chip
};

}  // namespace nimba::smi
