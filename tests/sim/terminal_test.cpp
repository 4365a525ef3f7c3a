// SPDX-License-Identifier: MIT
// nimba-sim in the foreground of a terminal.
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <string>

namespace nimba::sim::test {
namespace {

constexpr int kPatience = 20000;  // milliseconds

// A terminal with nimba-sim in front, which runs a shell script on the default machine.
class Terminal {
  public:
    explicit Terminal(const char* script)
    {
        pid_ = forkpty(&descriptor_, nullptr, nullptr, nullptr);
        if (pid_ == 0) {
            signal(SIGINT, SIG_DFL);  // whoever runs the tests may ignore it
            execl(NIMBA_SIM, NIMBA_SIM, "run", "--", "sh", "-c", script, nullptr);
            _exit(125);
        }
    }
    ~Terminal()
    {
        if (pid_ > 0) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
        close(descriptor_);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    // Reads until `text` has been seen, or the terminal is closed; returns what was read.
    std::string read_until(const std::string& text)
    {
        std::string seen;
        while (seen.find(text) == std::string::npos) {
            pollfd waiting{descriptor_, POLLIN, 0};
            std::array<char, 256> part{};
            if (poll(&waiting, 1, kPatience) <= 0) {
                break;
            }
            const ssize_t length = read(descriptor_, part.data(), part.size());
            if (length <= 0) {
                break;
            }
            seen.append(part.data(), static_cast<std::size_t>(length));
        }
        return seen;
    }

    void type(const std::string& keys) const
    {
        ASSERT_EQ(write(descriptor_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    }

    int exit_status()
    {
        int status = 0;
        waitpid(pid_, &status, 0);
        pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

  private:
    int descriptor_ = -1;
    pid_t pid_ = -1;
};

constexpr const char* kInterrupt = "\x03";

TEST(TerminalRun, CommandReadsTheTerminal)
{
    Terminal terminal{"echo ready; read word; echo \"got $word\"; exit 5"};
    terminal.read_until("ready");
    terminal.type("hello\n");
    EXPECT_NE(terminal.read_until("got hello").find("got hello"), std::string::npos);
    EXPECT_EQ(terminal.exit_status(), 5);
}

TEST(TerminalRun, InterruptEndsTheCommandAndTheRun)
{
    Terminal terminal{"echo ready; exec sleep 1000"};
    terminal.read_until("ready");
    terminal.type(kInterrupt);
    EXPECT_EQ(terminal.exit_status(), 130);
}

TEST(TerminalRun, InterruptReachesTheCommandOnce)
{
    Terminal terminal{
        "trap 'echo interrupted' INT; echo ready; read a; read b; read c; echo done; exit 6"};
    terminal.read_until("ready");
    terminal.type(kInterrupt);
    std::string seen = terminal.read_until("interrupted");
    terminal.type("1\n2\n3\n");
    seen += terminal.read_until("done");
    EXPECT_NE(seen.find("done"), std::string::npos);
    EXPECT_NE(seen.find("interrupted"), std::string::npos);
    EXPECT_EQ(seen.find("interrupted"), seen.rfind("interrupted"));
    EXPECT_EQ(terminal.exit_status(), 6);
}

}  // namespace
}  // namespace nimba::sim::test
