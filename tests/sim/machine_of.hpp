// SPDX-License-Identifier: MIT
#pragma once

#include "machine_file.hpp"
#include "support/temp_directory.hpp"

#include <string>

namespace nimba::sim::test {

// The machine that a machine file with this text, behind its description, describes.
inline Machine machine_of(const std::string& text)
{
    const nimba::test::TempDirectory directory;
    return read_machine(directory.write("machine.toml", "description = \"A machine\"\n" + text));
}

}  // namespace nimba::sim::test
