// SPDX-License-Identifier: MIT
// Machine files that are wrong, and the one line that says so.
#pragma once

#include "machine_file.hpp"
#include "machine_file_error.hpp"

#include <ostream>
#include <string>

namespace nimba::sim::test {

struct BadFile {
    const char* name;
    const char* text;
    const char* message;  // behind the file's path
};

inline std::ostream& operator<<(std::ostream& stream, const BadFile& file)
{
    return stream << file.name;
}

// What is wrong with a machine file.
inline std::string error_of(const std::string& file)
{
    try {
        read_machine(file);
    } catch (const MachineFileError& error) {
        return error.what();
    }
    return "(no error)";
}

}  // namespace nimba::sim::test

// Line 1 is the description, so an adapter's table starts on line 2.
#define ADAPTER(keys) "description = \"a\"\n[[adapter]]\n" keys
#define GOOD_ADAPTER \
    ADAPTER("chip = \"nimba-k1\"\nbus_id = \"0000:01:00.0\"\ncard = 0\n")  // lines 2 to 5
