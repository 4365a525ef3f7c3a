// SPDX-License-Identifier: MIT
// The pipe that the name of a process comes through, and what the name replaces.
#include "process_command_fixture.hpp"

#include <unistd.h>

#include <algorithm>
#include <iterator>

namespace nimba::test {
namespace {

using ProcessCommandPipe = ProcessCommand;

TEST_F(ProcessCommandPipe, IsNotInheritedByOtherPrograms)
{
    const ScopedVariable host{"HOST", std::to_string(::getpid())};
    make_ps(R"sh(own=$(readlink "/proc/$$/fd/1")
for fd in "/proc/$HOST/fd/"*; do
    if [ "$(readlink "$fd")" = "$own" ]; then
        grep flags: "/proc/$HOST/fdinfo/${fd##*/}" >>"$here/flags"
    fi
done
echo app
)sh");
    EXPECT_EQ(name_of("4711"), "app");
    EXPECT_EQ(directory_.read("flags"), "flags:\t02000000\n");  // open for reading, closes on exec
}

TEST_F(ProcessCommandPipe, LeavesNothingOfALongerName)
{
    for (const char* pid : {"4711", "0"}) {
        std::fill(std::begin(device_.app_name), std::end(device_.app_name), 'n');
        make_ps("echo 0\n");
        EXPECT_EQ(name_of(pid), "0");
        EXPECT_EQ(std::string(std::begin(device_.app_name), std::end(device_.app_name)),
                  "0" + std::string(47, '\0'))
            << pid;
    }
}

}  // namespace
}  // namespace nimba::test
