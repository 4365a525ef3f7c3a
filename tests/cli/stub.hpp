// SPDX-License-Identifier: MIT
#pragma once

namespace stub {

// What every entry point does first: the tool must have installed its callback before any other
// call, and NIMBA_STUB_FAULT may tell that this one goes wrong.
void enter(const char* call);

}  // namespace stub
