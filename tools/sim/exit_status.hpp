// SPDX-License-Identifier: MIT
#pragma once

namespace nimba::sim {

inline constexpr int kNoOutput = 1;
inline constexpr int kBadUsage = 2;
inline constexpr int kBadMachine = 3;
inline constexpr int kNoTestBed = 4;
inline constexpr int kNotExecutable = 126;
inline constexpr int kNotFound = 127;
inline constexpr int kSignalled = 128;  // plus the signal's number

}  // namespace nimba::sim
