// SPDX-License-Identifier: MIT
// Running a shell command, and asking dmidecode.
#include "system_memory_fixture.hpp"

#include <sys/wait.h>

#include <array>
#include <cerrno>
#include <csignal>

namespace nimba::test {
namespace {

constexpr char kUnwritten = '\x77';

class SystemMemoryCommand : public SystemMemory {
  protected:
    SystemMemoryCommand() { buffer_.fill(kUnwritten); }

    // Runs the command with so many bytes of buffer_; returns the number of bytes read.
    std::int32_t run(const std::string& command, std::uint32_t size)
    {
        return runShellCommand(command.c_str(), buffer_.data(), size);
    }
    std::string buffer(std::size_t size) const { return {buffer_.data(), size}; }
    static std::string unwritten(std::size_t size) { return std::string(size, kUnwritten); }

    std::array<char, 64> buffer_{};
};

std::string zeros(std::size_t size)
{
    return std::string(size, '\0');
}

TEST_F(SystemMemoryCommand, FillsTheBufferWithItsOutputAndZeros)
{
    EXPECT_EQ(run("printf 'one\\ntwo'", 20), 7);
    EXPECT_EQ(buffer(64), "one\ntwo" + zeros(13) + unwritten(44));
}

TEST_F(SystemMemoryCommand, IsRunByTheShell)
{
    EXPECT_EQ(run("x=4; echo $((x + 3)) | cat", 20), 2);
    EXPECT_EQ(buffer(64), "7\n" + zeros(18) + unwritten(44));
}

TEST_F(SystemMemoryCommand, MayWriteLessThanFits)
{
    EXPECT_EQ(run("printf 1234567", 9), 7);
    EXPECT_EQ(buffer(64), "1234567" + zeros(2) + unwritten(55));
    EXPECT_EQ(run("printf 12345678", 9), 8);
    EXPECT_EQ(buffer(64), "12345678" + zeros(1) + unwritten(55));
}

TEST_F(SystemMemoryCommand, IsCutToOneByteLessThanTheBuffer)
{
    EXPECT_EQ(run("printf 123456789", 9), 8);
    EXPECT_EQ(buffer(64), "12345678" + zeros(1) + unwritten(55));
    EXPECT_EQ(run("yes", 5), 4);
    EXPECT_EQ(buffer(64), "y\ny\n" + zeros(1) + "678" + zeros(1) + unwritten(55));
}

TEST_F(SystemMemoryCommand, IsReadWholeWhenItWritesInPieces)
{
    EXPECT_EQ(run("for i in 1 2 3 4; do /bin/echo $i; done", 64), 8);
    EXPECT_EQ(buffer(64), "1\n2\n3\n4\n" + zeros(56));
}

TEST_F(SystemMemoryCommand, FillsALargeBuffer)
{
    std::string large(100000, kUnwritten);
    EXPECT_EQ(runShellCommand("head -c 200000 /dev/zero | tr '\\0' z", large.data(), 99999), 99998);
    EXPECT_EQ(large, std::string(99998, 'z') + zeros(1) + unwritten(1));
}

TEST_F(SystemMemoryCommand, MayWriteAnyBytes)
{
    EXPECT_EQ(run(R"(printf 'a\000\377b')", 8), 4);
    EXPECT_EQ(buffer(64), std::string("a\0\377b", 4) + zeros(4) + unwritten(56));
}

TEST_F(SystemMemoryCommand, ThatWritesNothingLeavesZeros)
{
    EXPECT_EQ(run("true", 10), 0);
    EXPECT_EQ(buffer(64), zeros(10) + unwritten(54));
    buffer_.fill(kUnwritten);
    EXPECT_EQ(run("exit 3", 10), 0);
    EXPECT_EQ(buffer(64), zeros(10) + unwritten(54));
    EXPECT_EQ(run("", 10), 0);
}

TEST_F(SystemMemoryCommand, CountsWhatItWroteBeforeItFailed)
{
    EXPECT_EQ(run("printf ab; exit 3", 10), 2);
    EXPECT_EQ(buffer(64), "ab" + zeros(8) + unwritten(54));
}

TEST_F(SystemMemoryCommand, ThatTheShellDoesNotKnowWritesNothing)
{
    EXPECT_EQ(run("nimba-no-such-command 2>/dev/null", 10), 0);
    EXPECT_EQ(buffer(64), zeros(10) + unwritten(54));
}

TEST_F(SystemMemoryCommand, WithRoomForTheEndAloneReadsNothing)
{
    EXPECT_EQ(run("printf 1", 1), 0);
    EXPECT_EQ(buffer(64), zeros(1) + unwritten(63));
}

TEST_F(SystemMemoryCommand, WithoutRoomWritesNothing)
{
    EXPECT_EQ(run("printf 123", 0), 0);
    EXPECT_EQ(buffer(64), unwritten(64));
}

TEST_F(SystemMemoryCommand, WritesNothingToStandardOutput)
{
    EXPECT_EQ(stdout_of([&] { run("printf 12", 10); }), "");
}

TEST_F(SystemMemoryCommand, ThatCannotBeStartedLeavesTheBuffer)
{
    std::int32_t status = 42;
    // Found before: a sanitizer's check of this object opens descriptors, too.
    char* const start = buffer_.data();
    const std::string output = stdout_of([&] {
        const NoMoreDescriptors full;
        status = runShellCommand("printf 12", start, 20);
    });
    EXPECT_EQ(output, "Failed to run command\n");
    EXPECT_EQ(status, 1);
    EXPECT_EQ(buffer(64), unwritten(64));
}

TEST_F(SystemMemoryCommand, ThatCannotBeStartedTellsNoMemory)
{
    make_text(module_of("64 bits", "A", "DDR5"));
    std::int32_t width = 42;
    std::int32_t type = 42;
    const std::string of_width = stdout_of([&] {
        const NoMoreDescriptors full;
        width = runShellCommand_getBitWidth();
    });
    const std::string of_type = stdout_of([&] {
        const NoMoreDescriptors full;
        type = runShellCommand_getMemoryTYpe();
    });
    EXPECT_EQ(of_width, "Failed to run command\n");
    EXPECT_EQ(width, 1);
    EXPECT_EQ(of_type, "Failed to run command\n");
    EXPECT_EQ(type, 1);
}

TEST_F(SystemMemoryCommand, IsOverWhenItsOutputIsReturned)
{
    make_text(module_of("64 bits", "A", "DDR5"));
    const auto before = open_descriptors();
    EXPECT_EQ(run("printf 12", 10), 2);
    EXPECT_EQ(runShellCommand_getBitWidth(), 64);
    EXPECT_EQ(runShellCommand_getMemoryTYpe(), 5);
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST_F(SystemMemoryCommand, AsksDmidecodeForMemory)
{
    make_command(R"(printf '[%s]' "$@" >>"$here/arguments")"
                 "\n");
    EXPECT_EQ(runShellCommand_getBitWidth(), 0);
    EXPECT_EQ(directory_.read("arguments"), "[-t][memory]");
    EXPECT_EQ(runShellCommand_getMemoryTYpe(), 4);
    EXPECT_EQ(directory_.read("arguments"), "[-t][memory][-t][memory]");
}

TEST_F(SystemMemoryCommand, IsReadToItsEndWhateverDmidecodeReturns)
{
    directory_.write("text", module_of("64 bits", "A", "DDR5"));
    make_command("cat \"$here/text\"\nexit 1\n");
    EXPECT_EQ(runShellCommand_getBitWidth(), 64);
    EXPECT_EQ(runShellCommand_getMemoryTYpe(), 5);
}

// A handled signal interrupts the calls of this process in its scope.
class InterruptingSignal final {
  public:
    InterruptingSignal()
    {
        struct sigaction action {};
        action.sa_handler = [](int) {};
        ::sigaction(SIGUSR1, &action, &before_);
    }
    ~InterruptingSignal() { ::sigaction(SIGUSR1, &before_, nullptr); }
    InterruptingSignal(const InterruptingSignal&) = delete;
    InterruptingSignal& operator=(const InterruptingSignal&) = delete;

  private:
    struct sigaction before_ {};
};

// Shell commands: signal this process when it sleeps over its reading.
std::string interrupt_reading()
{
    const std::string host = std::to_string(::getpid());
    return "until grep -q '^State:.S' /proc/" + host + "/status; do :; done; kill -USR1 " + host +
           "; ";
}

TEST_F(SystemMemoryCommand, IsReadWholeWhenASignalInterruptsTheReading)
{
    const InterruptingSignal signal;
    EXPECT_EQ(run(interrupt_reading() + "printf ab; " + interrupt_reading() + "printf cd", 20), 4);
    EXPECT_EQ(buffer(64), "abcd" + zeros(16) + unwritten(44));
}

TEST_F(SystemMemoryCommand, TellsMemoryWhenASignalInterruptsTheReading)
{
    const InterruptingSignal signal;
    directory_.write("text", module_of("72 bits", "A", "DDR5"));
    make_command(interrupt_reading() + "printf 'Total '; " + interrupt_reading() +
                 "cat \"$here/text\"\n");
    EXPECT_EQ(runShellCommand_getBitWidth(), 72);
    EXPECT_EQ(runShellCommand_getMemoryTYpe(), 5);
}

}  // namespace
}  // namespace nimba::test
