// SPDX-License-Identifier: MIT
// A program that a host starts while a command line is open does not inherit it.
#include "child_process.hpp"
#include "nimba_mgmt_interface.h"
#include "support/closed_files.hpp"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace nimba::test {
namespace {

// Asks for the name of the process. Returns whether each stream on its command line would have been
// closed in a program started meanwhile.
std::vector<bool> streams_while_asking_for(int pid)
{
    const ClosedFiles files{"/proc/" + std::to_string(pid) + "/cmdline"};
    std::array<char, 64> name{};
    getPackageNameFromPid(pid, name.data(), 64);
    return files.closes_on_exec();
}

TEST(ProcessNameDescriptor, IsNotInherited)
{
    const NamedProcess process{{"/usr/bin/app"}};
    EXPECT_EQ(streams_while_asking_for(process.pid()), (std::vector<bool>{true}));
}

TEST(ProcessNameDescriptor, OfAnEmptyCommandLineIsNotInherited)
{
    const EndedProcess process;
    EXPECT_EQ(streams_while_asking_for(process.pid()), (std::vector<bool>{true}));
}

}  // namespace
}  // namespace nimba::test
