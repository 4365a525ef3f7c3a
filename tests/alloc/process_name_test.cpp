// SPDX-License-Identifier: MIT
// The name of a process, from the first word of its command line.
#include "child_process.hpp"
#include "nimba_mgmt_interface.h"
#include "support/captured_stdout.hpp"
#include "support/descriptor.hpp"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace nimba::test {
namespace {

constexpr std::size_t kFence = 16;

// What stands in a destination after the call, and behind it.
struct Answer {
    std::int32_t status;
    std::string bytes;

    // The text in a destination whose every other byte is as it was, or at most zero.
    std::string text() const { return bytes.substr(0, bytes.find('\0')); }
};

// Asks for a name of `size` bytes in a destination of 64 or more that is full of "#", and expects
// that nothing behind the `size` bytes is written.
Answer ask(int pid, std::int32_t size = 64)
{
    const std::size_t usable = size < 0 ? 0U : static_cast<std::size_t>(size);
    Answer answer{42, std::string(usable + kFence, '#')};
    const std::string output =
        stdout_of([&] { answer.status = getPackageNameFromPid(pid, answer.bytes.data(), size); });
    EXPECT_EQ(output, "");
    EXPECT_EQ(answer.bytes.substr(usable), std::string(kFence, '#'));
    return answer;
}

// The name of a process with this command line.
std::string name_of(const std::vector<std::string>& command_line, std::int32_t size = 64)
{
    const NamedProcess process{command_line};
    const Answer answer = ask(process.pid(), size);
    EXPECT_EQ(answer.status, 0);
    return answer.text();
}

std::string repeated(std::size_t count, char letter)
{
    return std::string(count, letter);
}

TEST(ProcessName, IsTheFirstWordWithItsDirectory)
{
    EXPECT_EQ(name_of({"/usr/bin/app", "-u", "-"}), "/usr/bin/app");
    EXPECT_EQ(name_of({"./app", "-u"}), "./app");
    EXPECT_EQ(name_of({"app"}), "app");
    EXPECT_EQ(name_of({"/"}), "/");
}

TEST(ProcessName, KeepsBlanksWhenItIsShort)
{
    EXPECT_EQ(name_of({"server: main process /etc/server.conf"}),
              "server: main process /etc/server.conf");
    EXPECT_EQ(name_of({" app ", "-u"}), " app ");
}

TEST(ProcessName, IsEmptyWhenTheFirstWordIs)
{
    EXPECT_EQ(name_of({""}), "");
    EXPECT_EQ(name_of({"", "-u"}), "");
}

TEST(ProcessName, IsWholeUpTo63Characters)
{
    const std::string directory = "/usr/local/lib/";  // 15 characters
    EXPECT_EQ(name_of({directory + repeated(47, 'n')}), directory + repeated(47, 'n'));
    EXPECT_EQ(name_of({directory + repeated(48, 'n')}), directory + repeated(48, 'n'));
}

TEST(ProcessName, IsTheLastComponentFrom64CharactersOn)
{
    const std::string directory = "/usr/local/lib/";
    EXPECT_EQ(name_of({directory + repeated(49, 'n')}), repeated(49, 'n'));
    EXPECT_EQ(name_of({directory + repeated(50, 'n')}), repeated(50, 'n'));
    EXPECT_EQ(name_of({"/" + repeated(54, 'd') + "/bin/long-name", "-u"}), "long-name");
    EXPECT_EQ(name_of({repeated(64, 'd') + "/name"}), "name");
}

TEST(ProcessName, IsTheWholeLongWordWithoutADirectory)
{
    EXPECT_EQ(name_of({repeated(50, 'n') + " " + repeated(30, 'm')}), repeated(50, 'n'));
}

TEST(ProcessName, OfALongWordEndsAtItsFirstBlankBeforeTheDirectoryIsDropped)
{
    EXPECT_EQ(name_of({"/opt/" + repeated(60, 'd') + "/app --path /var/lib/data"}), "app");
    EXPECT_EQ(name_of({"/opt/my " + repeated(60, 'd') + "/bin/app"}), "my");
    EXPECT_EQ(name_of({"/opt/app  " + repeated(60, 'd')}), "app");
    EXPECT_EQ(name_of({"/opt/app\t" + repeated(60, 'd')}), "app\t" + repeated(59, 'd'));
}

TEST(ProcessName, OfALongWordMayBeEmpty)
{
    EXPECT_EQ(name_of({" /opt/" + repeated(60, 'd') + "/app"}), "");
    EXPECT_EQ(name_of({"/opt/" + repeated(60, 'd') + "/app/"}), "");
    EXPECT_EQ(name_of({"/opt/ " + repeated(60, 'd') + "/app"}), "");
}

TEST(ProcessName, OfALongWordIsCutTo63Characters)
{
    EXPECT_EQ(name_of({"/" + repeated(62, 'n') + "e"}), repeated(62, 'n') + "e");
    EXPECT_EQ(name_of({"/" + repeated(63, 'n') + "e"}), repeated(63, 'n'));
    EXPECT_EQ(name_of({repeated(63, 'n') + "e"}), repeated(63, 'n'));
    EXPECT_EQ(name_of({"/usr/bin/" + repeated(63, 'n') + std::string(300, 'e')}),
              repeated(63, 'n'));
}

TEST(ProcessName, ComesFromTheFirst511Characters)
{
    const std::string long_path = "/" + repeated(500, 'd') + "/";  // 502 characters
    EXPECT_EQ(name_of({long_path + "ninechars"}), "ninechars");
    EXPECT_EQ(name_of({long_path + "ninecharsandmore"}), "ninechars");
    EXPECT_EQ(name_of({long_path + "ninechars/name"}), "ninechars");
    EXPECT_EQ(name_of({long_path + "nine chars/name"}), "nine");
    EXPECT_EQ(name_of({repeated(511, 'n') + "/name"}), repeated(63, 'n'));
    EXPECT_EQ(name_of({repeated(510, 'd') + "/name"}), "");
}

TEST(ProcessName, DoesNotSeeTheSecondLineOfACommandLine)
{
    EXPECT_EQ(name_of({"first\nsecond"}), "first\n");
    EXPECT_EQ(name_of({"\nsecond"}), "\n");
    EXPECT_EQ(name_of({"/opt/first\n" + repeated(60, 's') + "/second"}), "/opt/first\n");
    EXPECT_EQ(name_of({"/opt/" + repeated(60, 'f') + "/first\n/second"}), "first\n");
}

TEST(ProcessName, IsWholeWhenShorterThanTheDestination)
{
    EXPECT_EQ(name_of({"/bin/app"}, 9), "/bin/app");
    EXPECT_EQ(name_of({"/bin/app"}, 8), "app");
    EXPECT_EQ(name_of({"/bin/app"}, 4), "app");
    EXPECT_EQ(name_of({"/bin/app"}, 3), "ap");
    EXPECT_EQ(name_of({"/bin/app"}, 1), "");
    EXPECT_EQ(name_of({""}, 1), "");
    const std::string path = "/usr/bin/" + repeated(100, 'n') + " --option";
    EXPECT_EQ(name_of({path}, 256), path);
}

TEST(ProcessName, IsNotWrittenToADestinationWithoutRoom)
{
    const NamedProcess process{{"/bin/app"}};
    const NamedProcess nameless{{""}};
    const int gone = gone_process();
    for (const std::int32_t size : {0, -1, -64, INT_MIN}) {
        SCOPED_TRACE(size);
        EXPECT_EQ(ask(process.pid(), size).status, 0);
        EXPECT_EQ(ask(nameless.pid(), size).status, 0);
        EXPECT_EQ(ask(gone, size).status, 0);
    }
}

TEST(ProcessName, IsEmptyWhenTheProcessHasGone)
{
    for (const int pid : {gone_process(), 0, -1, INT_MIN, INT_MAX}) {
        SCOPED_TRACE(pid);
        const Answer answer = ask(pid);
        EXPECT_EQ(answer.status, 0);
        EXPECT_EQ(answer.text(), "");
    }
}

TEST(ProcessName, OfAnEmptyCommandLineLeavesTheDestination)
{
    const EndedProcess process;
    const Answer answer = ask(process.pid());
    EXPECT_EQ(answer.status, -1);
    EXPECT_EQ(answer.bytes, repeated(64 + kFence, '#'));
}

TEST(ProcessName, LeavesNoDescriptorOpen)
{
    const NamedProcess process{{"/bin/app"}};
    const NamedProcess long_named{{"/" + repeated(600, 'n')}};
    const EndedProcess ended;
    const int gone = gone_process();
    const auto before = open_descriptors();
    std::vector<std::pair<std::int32_t, std::ptrdiff_t>> seen;
    for (const int pid : {process.pid(), long_named.pid(), ended.pid(), gone}) {
        const std::int32_t status = ask(pid).status;
        seen.emplace_back(status, open_descriptors());
    }
    EXPECT_EQ(seen, (std::vector<std::pair<std::int32_t, std::ptrdiff_t>>{
                        {0, before}, {0, before}, {-1, before}, {0, before}}));
}

}  // namespace
}  // namespace nimba::test
