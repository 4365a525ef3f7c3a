// SPDX-License-Identifier: MIT
// Changing the preference file: the library changes a copy, and the copy takes the file's place
// when it holds what it should.
#pragma once

#include "tools/smi/options.hpp"
#include "tools/smi/prefer/plan.hpp"
#include "tools/smi/prefer/preference_file.hpp"

#include <functional>
#include <optional>
#include <vector>

namespace nimba::smi {

// What to do to the preferences that are held; nothing when that cannot be done.
using Planner = std::function<std::optional<PreferencePlan>(std::vector<Preference> held)>;

struct ChangeOutcome {
    std::optional<std::vector<Preference>>
        expected{};  // in the file; nothing when it was left alone
    std::vector<Problem> problems{};
    std::vector<Problem> told{};  // were printed, before the file was changed
};

// Makes the planned change. Other nimba-smi wait for it, and signals are held until it is done. A
// file that is as planned already is not written. Lines that the library does not keep are told
// before, and stay in a copy beside the file whose name ends in ".bak".
ChangeOutcome change_preferences(const Options& options, const PreferenceFile& file,
                                 const Planner& plan);

}  // namespace nimba::smi
