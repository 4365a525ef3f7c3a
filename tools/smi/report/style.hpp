// SPDX-License-Identifier: MIT
#pragma once

namespace nimba::smi::page {

// The style sheet of the page: for windows of any width, light and dark, and for paper.
extern const char* const kStyle;

}  // namespace nimba::smi::page
