// SPDX-License-Identifier: MIT
// How a call may end that reads hostile bytes, and the numbers that decide it.
#pragma once

#include "fuzz/support/breach.hpp"

#include <cstdint>
#include <functional>
#include <string_view>

namespace nimba::fuzz {

enum class Outcome { kDone, kNoNumber, kOutOfRange, kBreach };

// What became of the call. An error that is not one of a number's conversion is a finding: it ends
// the process.
Outcome outcome_of(const std::function<void()>& call);

// What std::stoi makes of a text, or how it fails; and std::stoll.
Outcome to_int(std::string_view text, int base, int32_t& number);
Outcome to_long(std::string_view text, int base, int64_t& number);

// The low 32 bits of what strtol reads in base 10.
int32_t low_bits(std::string_view text);

}  // namespace nimba::fuzz
