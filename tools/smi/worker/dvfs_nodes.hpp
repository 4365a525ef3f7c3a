// SPDX-License-Identifier: MIT
// What the nodes of an adapter's driver info directory themselves tell: the library reads a missing
// one as 0, and does not say why it could not read or write one.
#pragma once

#include "tools/smi/dvfs/reading.hpp"

#include <string>

namespace nimba::smi {

struct InfoDirectory {
    int fd = -1;  // negative: the library could not open it
    std::string path;
};

// Whether the user may read and write a node. Blocks as long as the driver does.
NodeAccess access_to(const InfoDirectory& directory, const char* node);

// Whether a node can be read and begins with a decimal number and no more in that word: only then
// the library's figure is the driver's.
bool begins_with_number(const InfoDirectory& directory, const char* node);

}  // namespace nimba::smi
