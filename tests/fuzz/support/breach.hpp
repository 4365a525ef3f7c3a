// SPDX-License-Identifier: MIT
#pragma once

namespace nimba::fuzz {

// Thrown where the library would end the process over a bound that a text breaks.
struct Breach {};

}  // namespace nimba::fuzz
