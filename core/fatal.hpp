// SPDX-License-Identifier: MIT
#pragma once

namespace nimba {

// Ends the process over a bound that what the driver printed breaks: one line on standard error
// that names `breach`, then abort().
[[noreturn]] void stop_process(const char* breach);

}  // namespace nimba
