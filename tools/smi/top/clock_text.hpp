// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/monitor/time_text.hpp"

#include <chrono>
#include <cstddef>
#include <string>

namespace nimba::smi::top {

// "18:02:59", in the time zone of the user.
inline std::string clock_text(std::chrono::system_clock::time_point time)
{
    constexpr std::size_t kWithoutMilliseconds = 8;
    return local_text(time).substr(0, kWithoutMilliseconds);
}

}  // namespace nimba::smi::top
