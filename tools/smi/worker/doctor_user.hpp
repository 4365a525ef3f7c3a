// SPDX-License-Identifier: MIT
// What "doctor" has to know of the user and of the preference file.
#pragma once

#include "tools/smi/doctor/facts.hpp"

#include <optional>
#include <string>

namespace nimba::smi {

UserFacts user_facts();

// Of the preference file in the home directory `home`. The file is not changed.
PreferenceFacts preference_facts(const std::optional<std::string>& home);

}  // namespace nimba::smi
