// SPDX-License-Identifier: MIT
#pragma once

#include <set>
#include <string>

namespace nimba::sim {

// Takes what a shared library exports under other names than `names` out of its symbol table.
// `library` is the whole file; it is for this kind of machine and refers to none of these symbols
// itself. Throws TestBedError when it is damaged.
void keep_symbols(std::string& library, const std::set<std::string>& names);

}  // namespace nimba::sim
