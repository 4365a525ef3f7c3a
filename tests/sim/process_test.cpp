// SPDX-License-Identifier: MIT
// The machine's processes as programs of a run see them: in /proc, and through ps.
#include "sim_run.hpp"
#include "support/temp_directory.hpp"

#include <gtest/gtest.h>

#include <string>

namespace nimba::sim::test {
namespace {

constexpr const char* kProcesses = R"(description = "Processes"
[[process]]
pid = 4100001
name = "/opt/photo editor/bin/photo editor"
arguments = ["two words", ""]

[[process]]
pid = 4100002
name = "/opt/a-maker-of-great-programs/a-simulator-of-everything/bin/simulator-of-all"

[[process]]
pid = 4100003
comm = "kworker/0:1"

[[process]]
pid = 4100004
name = "/usr/bin/python3"
comm = "tool\u20ac"

[[process]]
pid = 4100005
name = "two\nlines"
)";

class Processes : public ::testing::Test {
  protected:
    Result run(const std::string& command_line) const
    {
        return run_on(machine_, "sh -c '" + command_line + "'");
    }
    std::string output_of(const std::string& command_line) const
    {
        return run(command_line).output;
    }

  private:
    nimba::test::TempDirectory directory_;
    std::string machine_ = directory_.write("machine.toml", kProcesses);
};

TEST_F(Processes, CommandLineKeepsBlanksAndLongPaths)
{
    EXPECT_EQ(output_of("tr \"\\000\" \"|\" </proc/4100001/cmdline"),
              "/opt/photo editor/bin/photo editor|two words||");
    EXPECT_EQ(output_of("tr \"\\000\" \"|\" </proc/4100002/cmdline"),
              "/opt/a-maker-of-great-programs/a-simulator-of-everything/bin/simulator-of-all|");
}

TEST_F(Processes, KernelThreadHasAnEmptyCommandLine)
{
    EXPECT_EQ(output_of("wc -c </proc/4100003/cmdline"), "0\n");
    EXPECT_EQ(output_of("cat /proc/4100003/comm"), "kworker/0:1\n");
}

TEST_F(Processes, ProcessThatIsGoneHasNoCommandLine)
{
    EXPECT_EQ(output_of("test -e /proc/4100009/cmdline; echo $?"), "1\n");
}

TEST_F(Processes, PsTellsTheirNames)
{
    EXPECT_EQ(output_of("ps -p 4100001 -o comm="), "photo editor\n");
    EXPECT_EQ(output_of("ps -o comm= -p 4100001"), "photo editor\n");
    EXPECT_EQ(output_of("ps -p 4100002 -o comm="), "simulator-of-al\n");
    EXPECT_EQ(output_of("ps -p 4100003 -o comm=; echo $?"), "kworker/0:1\n0\n");
    EXPECT_EQ(output_of("ps -p 4100004 -o comm="), "tool\u20ac\n");
}

TEST_F(Processes, PsShowsNoControlCharacters)
{
    EXPECT_EQ(output_of("ps -p 4100005 -o comm="), "two?lines\n");
}

TEST_F(Processes, PsOfNoProcessSaysNothing)
{
    EXPECT_EQ(output_of("ps -p 4100009 -o comm=; echo $?"), "1\n");
}

TEST_F(Processes, PsOfARealProcessIsThatOfTheSystem)
{
    EXPECT_EQ(output_of("ps -p $$ -o comm=; echo $?"), "sh\n0\n");
    EXPECT_EQ(output_of("ps -o comm= -p $$; echo $?"), "sh\n0\n");
    EXPECT_EQ(output_of("test \"$(ps -p $$ -o pid=)\" -eq $$; echo $?"), "0\n");
}

TEST_F(Processes, PsHandsOtherCallsToTheNextPsOnPath)
{
    const nimba::test::TempDirectory programs;
    const std::string ps =
        programs.write("ps", "#!/bin/sh\nprintf \"<%s>\" \"$@\"\necho \" (${0##*/})\"\nexit 7\n");
    ASSERT_EQ(run_shell("chmod +x " + ps).status, 0);
    const std::string here = programs.path().string();
    const auto output = [&](const std::string& arguments) {
        return output_of("first=${PATH%%:*}; PATH=$first:$first/../bin:" + here + ":$PATH; ps " +
                         arguments + "; echo $?");
    };
    EXPECT_EQ(output("-e"), "<-e> (ps)\n7\n");
    EXPECT_EQ(output("\"two words\" \"\""), "<two words><> (ps)\n7\n");
    EXPECT_EQ(output("-p 4100001 -o args="), "<-p><4100001><-o><args=> (ps)\n7\n");
    EXPECT_EQ(output("-p 4100009 -o comm="), "<-p><4100009><-o><comm=> (ps)\n7\n");
    EXPECT_EQ(output("-p x/../4100001 -o comm="), "<-p><x/../4100001><-o><comm=> (ps)\n7\n");
    EXPECT_EQ(output("-p 4100001 -o comm="), "photo editor\n0\n");
}

TEST_F(Processes, PsWithoutANextOneIsNotFound)
{
    EXPECT_EQ(output_of("PATH=${PATH%%:*}; ps -e; echo $?"),
              "nimba-sim: there is no ps on PATH behind that of the simulated machine\n127\n");
}

}  // namespace
}  // namespace nimba::sim::test
