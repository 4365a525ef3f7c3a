// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace nimba::bench {

// The processor, the kernel and the compiler, as items of a Markdown list.
std::string describe_machine();

}  // namespace nimba::bench
