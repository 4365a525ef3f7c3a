// SPDX-License-Identifier: MIT
// What workers answer about the power and DVFS settings of their adapter, and about its control
// flag.
#pragma once

#include "tools/smi/worker/message.hpp"
#include "tools/smi/worker/session.hpp"

#include <string_view>

namespace nimba::smi {

// All settings, and what the user may do with their nodes.
Message answer_dvfs(Session& session);

// "FIELD=VALUE ...": sets those of the fields that the driver gives, as far as they have other
// values. The settings before and after that.
Message answer_dvfs_write(Session& session, std::string_view arguments);

// The control flag.
Message answer_flag(Session& session);

// "SET CLEAR", two numbers: sets and clears these bits. The flag before and after that. A flag that
// the driver does not give is left alone.
Message answer_flag_write(Session& session, std::string_view arguments);

}  // namespace nimba::smi
