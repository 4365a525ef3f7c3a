// SPDX-License-Identifier: MIT
// The same for a host in C++, which has more records.
#include "layouts.c"  // NOLINT(bugprone-suspicious-include): one source, two languages
