// SPDX-License-Identifier: MIT
// A program that a host starts while a command line is open does not inherit it.
#include "child_process.hpp"
#include "nimba_mgmt_interface.h"
#include "support/descriptor.hpp"

#include <dlfcn.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <string>
#include <vector>

namespace nimba::test {
namespace {

struct Watch {
    std::string path;
    std::vector<bool> closes_on_exec;  // one entry per stream on the path, as it is closed
};

Watch* watch = nullptr;

void look_at(int fd)
{
    if (watch != nullptr && descriptors_on(watch->path).contains(fd)) {
        watch->closes_on_exec.push_back(closes_on_exec(fd));
    }
}

// Asks for the name of the process. Returns whether each stream on its command line would have been
// closed in a program started meanwhile.
std::vector<bool> streams_while_asking_for(int pid)
{
    Watch watched{"/proc/" + std::to_string(pid) + "/cmdline", {}};
    std::array<char, 64> name{};
    watch = &watched;
    getPackageNameFromPid(pid, name.data(), 64);
    watch = nullptr;
    return watched.closes_on_exec;
}

}  // namespace

// Stands before the C library's function in this program.
extern "C" int fclose(std::FILE* stream)
{
    look_at(::fileno(stream));
    static const auto next = reinterpret_cast<int (*)(std::FILE*)>(::dlsym(RTLD_NEXT, "fclose"));
    return next(stream);
}

namespace {

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
