// SPDX-License-Identifier: MIT
#pragma once

#include <toml++/toml.h>

#include <string>

namespace nimba::sim {

// Parses the file. The table's nodes know their lines. A file that cannot be read, is larger than
// 1 MiB or is not TOML throws a MachineFileError.
toml::table parse_toml_file(const std::string& file);

}  // namespace nimba::sim
