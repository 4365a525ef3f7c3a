// SPDX-License-Identifier: MIT
// The name of a process, as `ps` tells it.
#include "process_command_fixture.hpp"
#include "support/captured_stdout.hpp"
#include "support/no_more_descriptors.hpp"

#include <sys/wait.h>

#include <cerrno>

namespace nimba::test {
namespace {

// The status of asking for the name of a process. In its scope nothing is called that a sanitizer
// watches: its checks open descriptors, too.
std::int32_t status_without_descriptors(const char* pid)
{
    data_vectors device{};
    std::snprintf(device.pid, sizeof device.pid, "%s", pid);
    const NoMoreDescriptors full;
    return get_AppName_info(&device);
}

TEST_F(ProcessCommand, TellsTheNameWithoutItsNewline)
{
    make_ps("echo app\n");
    EXPECT_EQ(name_of("4711"), "app");
    EXPECT_EQ(status_, 0);
}

TEST_F(ProcessCommand, TellsANameThatHasNoNewline)
{
    make_ps("printf app\n");
    EXPECT_EQ(name_of("4711"), "app");
}

TEST_F(ProcessCommand, RemovesOneNewlineAtTheEndAndNothingElse)
{
    make_ps(R"(printf ' a\n b \t\r\n\n')"
            "\n");
    EXPECT_EQ(name_of("4711"), " a\n b \t\r\n");
}

TEST_F(ProcessCommand, IsAskedForTheProcessIdAndItsNameAlone)
{
    make_ps(R"(printf '[%s]' "$@")"
            "\n");
    EXPECT_EQ(name_of("4711"), "[-p][4711][-o][comm=]");
}

TEST_F(ProcessCommand, IsNotRunForProcessIdZero)
{
    make_ps(": >\"$here/ran\"\necho app\n");
    EXPECT_EQ(name_of("0"), "0");
    EXPECT_EQ(status_, 0);
    EXPECT_FALSE(exists("ran"));
}

TEST_F(ProcessCommand, IsRunForOtherSpellingsOfZero)
{
    make_ps("echo app\n");
    for (const char* pid : {"00", "0x0", "-0", " 0", "0 ", "", "01"}) {
        EXPECT_EQ(name_of(pid), "app") << pid;
    }
}

TEST_F(ProcessCommand, ThatWritesNothingLeavesAnEmptyName)
{
    make_ps("exit 1\n");
    EXPECT_EQ(name_of("4711"), "");
    EXPECT_EQ(status_, 0);
}

TEST_F(ProcessCommand, ThatWritesANewlineAloneLeavesAnEmptyName)
{
    make_ps("echo\n");
    EXPECT_EQ(name_of("4711"), "");
    EXPECT_EQ(status_, 0);
}

TEST_F(ProcessCommand, ThatFailsIsBelievedAllTheSame)
{
    make_ps("echo app\nexit 3\n");
    EXPECT_EQ(name_of("4711"), "app");
    EXPECT_EQ(status_, 0);
}

TEST_F(ProcessCommand, ThatIsNotInstalledLeavesAnEmptyName)
{
    path_.assign(directory_.path().string());
    EXPECT_EQ(name_of("4711"), "");
    EXPECT_EQ(status_, 0);
}

TEST_F(ProcessCommand, HasItsNameCutTo47Bytes)
{
    const std::string name = "abcdefghijklmnopqrstuvwxyzabcdefghijklmnopqrstuvwxyz";
    for (const std::size_t length : {46U, 47U}) {
        make_ps("echo " + name.substr(0, length) + "\n");
        EXPECT_EQ(name_of("4711"), name.substr(0, length));
    }
    make_ps("echo " + name.substr(0, 48) + "\n");
    EXPECT_EQ(name_of("4711"), "abcdefghijklmnopqrstuvwxyzabcdefghijklmnopqrstu");
    make_ps("printf " + name + "\n");
    EXPECT_EQ(name_of("4711"), "abcdefghijklmnopqrstuvwxyzabcdefghijklmnopqrstu");
}

TEST_F(ProcessCommand, MayWriteMoreThanOnePieceWithAndWithoutANewline)
{
    for (const std::size_t length : {126U, 127U, 128U, 200U, 254U, 1'000U}) {
        SCOPED_TRACE(length);
        make_ps("printf " + std::string(length, 'n') + "\n");
        EXPECT_EQ(name_of("4711"), std::string(47, 'n'));
        make_ps("echo " + std::string(length, 'm') + "\n");
        EXPECT_EQ(name_of("4711"), std::string(47, 'm'));
    }
}

TEST_F(ProcessCommand, MayWriteInSeveralGoes)
{
    make_ps("printf a\n/bin/true\nprintf b\n/bin/true\necho c\n");
    EXPECT_EQ(name_of("4711"), "abc");
}

TEST_F(ProcessCommand, IsReadToTheEndOfWhatItWrites)
{
    make_ps("head -c 300000 /dev/zero | tr '\\0' n && : >\"$here/wrote-all\"\n");
    EXPECT_EQ(name_of("4711"), std::string(47, 'n'));
    EXPECT_EQ(status_, 0);
    EXPECT_TRUE(exists("wrote-all"));
}

TEST_F(ProcessCommand, WritesNothingBehindTheName)
{
    device_.note = "note";
    make_ps("printf " + std::string(300, 'n') + "\n");
    name_of("4711");
    EXPECT_EQ(device_.note, "note");
    EXPECT_STREQ(device_.pid, "4711");
}

TEST_F(ProcessCommand, LeavesTheProcessIdAsItIs)
{
    make_ps("echo app\n");
    for (const char* pid : {"4711", "0", "1 2 ' $x"}) {
        name_of(pid);
        EXPECT_STREQ(device_.pid, pid);
    }
}

TEST_F(ProcessCommand, WritesNothingToStandardOutput)
{
    make_ps("echo app\n");
    EXPECT_EQ(stdout_of([&] { name_of("4711"); }), "");
    EXPECT_EQ(stdout_of([&] { name_of("0"); }), "");
}

TEST_F(ProcessCommand, ThatCannotBeStartedFailsSilently)
{
    make_ps("echo app\n");
    std::int32_t status = 42;
    const std::string output = stdout_of([&] { status = status_without_descriptors("4711"); });
    EXPECT_EQ(status, -1);
    EXPECT_EQ(output, "");
}

TEST_F(ProcessCommand, IsNotNeededForProcessIdZero)
{
    EXPECT_EQ(status_without_descriptors("0"), 0);
}

TEST_F(ProcessCommand, LeavesNoDescriptorOpen)
{
    const auto before = open_descriptors();
    make_ps("echo app\n");
    name_of("4711");
    EXPECT_EQ(open_descriptors(), before);
    make_ps("printf " + std::string(300, 'n') + "\n");
    name_of("4711");
    EXPECT_EQ(open_descriptors(), before);
    path_.assign(directory_.path().string() + "/none");
    name_of("4711");
    EXPECT_EQ(open_descriptors(), before);
}

TEST_F(ProcessCommand, LeavesNoChildBehind)
{
    make_ps("echo app\n");
    name_of("4711");
    errno = 0;
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST_F(ProcessCommand, MayBeTheSystemsOwn)
{
    path_.assign("/usr/bin:/bin");
    if (!std::filesystem::exists("/usr/bin/ps") && !std::filesystem::exists("/bin/ps")) {
        GTEST_SKIP() << "this system has no ps";
    }
    const std::string own_name = read_file("/proc/self/comm");
    EXPECT_EQ(name_of(std::to_string(::getpid())) + "\n", own_name);
}

}  // namespace
}  // namespace nimba::test
