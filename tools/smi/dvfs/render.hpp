// SPDX-License-Identifier: MIT
// The faces of "dvfs".
#pragma once

#include "tools/smi/dvfs/outcome.hpp"
#include "tools/smi/dvfs/reading.hpp"
#include "tools/smi/dvfs/saved_state.hpp"
#include "tools/smi/exit_status.hpp"
#include "tools/smi/worker/payload.hpp"

#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace nimba::smi {

// The settings of the adapters that could be read, in slot order.
struct SettingsSnapshot {
    std::vector<const DvfsField*> fields;  // those to show
    std::vector<std::pair<SlotIdentity, DvfsReading>> adapters;
    std::vector<Problem> problems;
};

std::string settings_text(const SettingsSnapshot& snapshot);
std::string settings_csv(const SettingsSnapshot& snapshot);
std::string settings_json(const SettingsSnapshot& snapshot);

// What became of assignments; none when nothing was written.
struct SettingsChange {
    std::optional<SlotIdentity> adapter;
    std::vector<Outcome> outcomes;
    std::vector<Problem> problems;
};

std::string change_text(const SettingsChange& change);
std::string change_json(const SettingsChange& change);

// What would be written, in this order.
struct DryRun {
    std::optional<SlotIdentity> adapter;
    std::vector<Assignment> writes;
    std::vector<Problem> problems;
};

std::string dry_run_text(const DryRun& run);
std::string dry_run_json(const DryRun& run);

// That the state was saved.
std::string saved_json(const std::optional<SlotIdentity>& adapter, const std::string& file,
                       std::span<const Assignment> state, std::span<const Problem> problems);

}  // namespace nimba::smi
