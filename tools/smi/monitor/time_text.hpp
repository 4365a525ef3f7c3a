// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <string>

namespace nimba::smi {

// "2026-11-21T18:02:59.123Z"
std::string utc_text(std::chrono::system_clock::time_point time);

// "18:02:59.123", in the time zone of the user.
std::string local_text(std::chrono::system_clock::time_point time);

}  // namespace nimba::smi
