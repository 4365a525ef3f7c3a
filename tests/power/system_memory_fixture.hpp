// SPDX-License-Identifier: MIT
// Asking a command `dmidecode` that a test makes up for the memory of the system.
#pragma once

#include "nimba_mgmt_interface.h"
#include "support/captured_stdout.hpp"
#include "support/environment.hpp"
#include "support/no_more_descriptors.hpp"
#include "support/temp_directory.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace nimba::test {

// A memory module as dmidecode tells of it, up to its type.
inline std::string module_of(const std::string& width, const std::string& channel,
                             const std::string& type = "DDR4")
{
    return "Handle 0x0011, DMI type 17, 92 bytes\n"
           "Memory Device\n"
           "\tArray Handle: 0x0010\n"
           "\tTotal Width: " +
           width + "\n\tData Width: " + width +
           "\n\tSize: 16 GB\n"
           "\tForm Factor: DIMM\n"
           "\tSet: None\n"
           "\tLocator: DIMM 0\n"
           "\tBank Locator: P0 CHANNEL " +
           channel + "\n\tType: " + type + "\n";
}

class SystemMemory : public testing::Test {
  protected:
    // Makes `dmidecode` a shell script with these lines. $here is the directory it stands in.
    void make_command(const std::string& lines) const
    {
        const std::string command = directory_.write(
            "dmidecode", "#!/bin/sh\nhere=" + directory_.path().string() + '\n' + lines);
        std::filesystem::permissions(command, std::filesystem::perms::owner_all);
    }
    // Makes `dmidecode` write this text.
    void make_text(std::string_view text) const
    {
        directory_.write("text", text);
        make_command("cat \"$here/text\"\n");
    }
    bool exists(const char* name) const
    {
        return std::filesystem::exists(directory_.path() / name);
    }

    std::int32_t width_of(std::string_view text) const
    {
        make_text(text);
        return runShellCommand_getBitWidth();
    }
    std::int32_t type_of(std::string_view text) const
    {
        make_text(text);
        return runShellCommand_getMemoryTYpe();
    }

    TempDirectory directory_;
    const ScopedVariable path_{"PATH", directory_.path().string() + ":/usr/bin:/bin"};
};

}  // namespace nimba::test
