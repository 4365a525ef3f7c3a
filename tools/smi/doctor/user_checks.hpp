// SPDX-License-Identifier: MIT
// The checks of the user and of the preference file, from what workers found out. Pure functions.
#pragma once

#include "tools/smi/doctor/check.hpp"
#include "tools/smi/doctor/facts.hpp"

namespace nimba::smi {

Check permissions_check(const UserFacts& facts);

Check home_check(const PreferenceFacts& facts);
Check preference_file_check(const PreferenceFacts& facts, const Check& home);

}  // namespace nimba::smi
