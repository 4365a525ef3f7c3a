// SPDX-License-Identifier: MIT
#include "tools/smi/leaks/status_line.hpp"

#include "tools/descriptor.hpp"

#include <poll.h>
#include <pty.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>

namespace nimba::smi {
namespace {

// A terminal of 20 columns, and what has been written to it.
class StatusLineOnATerminal : public testing::Test {
  protected:
    void SetUp() override
    {
        winsize size{24, 20, 0, 0};
        int screen = -1;
        int terminal = -1;
        ASSERT_EQ(::openpty(&screen, &terminal, nullptr, nullptr, &size), 0);
        screen_ = tools::Descriptor{screen};
        terminal_ = tools::Descriptor{terminal};
        ::setenv("TERM", "xterm", 1);
    }

    [[nodiscard]] int terminal() const { return terminal_.get(); }

    void resize(unsigned short columns) const
    {
        const winsize size{24, columns, 0, 0};
        ASSERT_EQ(::ioctl(terminal_.get(), TIOCSWINSZ, &size), 0);
    }

    // What has been written since the last time.
    [[nodiscard]] std::string written() const
    {
        std::string text;
        pollfd waiting{screen_.get(), POLLIN, 0};
        while (::poll(&waiting, 1, 0) == 1) {
            std::array<char, 256> part{};
            const ssize_t length = ::read(screen_.get(), part.data(), part.size());
            text.append(part.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
        }
        return text;
    }

  private:
    tools::Descriptor screen_;
    tools::Descriptor terminal_;
};

TEST_F(StatusLineOnATerminal, IsWrittenOverAndGoneInTheEnd)
{
    {
        StatusLine line{terminal()};
        EXPECT_TRUE(line.is_visible());
        line.show("one");
        line.show("two");
        EXPECT_EQ(written(), "\r\x1b[Kone\r\x1b[Ktwo");
    }
    EXPECT_EQ(written(), "\r\x1b[K");
}

TEST_F(StatusLineOnATerminal, IsCutAtTheEdgeThatTheTerminalHasNow)
{
    StatusLine line{terminal()};
    line.show("0123456789012345678901234");
    EXPECT_EQ(written(), "\r\x1b[K0123456789012345678");
    resize(6);
    line.show("0123456789012345678901234");
    EXPECT_EQ(written(), "\r\x1b[K01234");
    resize(0);
    line.show(std::string(100, 'x'));
    EXPECT_EQ(written(), "\r\x1b[K" + std::string(79, 'x'));
}

TEST_F(StatusLineOnATerminal, LeavesTheTerminalAloneWhenThereWasNothingToShow)
{
    {
        const StatusLine line{terminal()};
    }
    EXPECT_EQ(written(), "");
}

TEST_F(StatusLineOnATerminal, IsNotShownWhereALineCannotBeCleared)
{
    for (const char* const name : {"dumb", static_cast<const char*>(nullptr)}) {
        name == nullptr ? ::unsetenv("TERM") : ::setenv("TERM", name, 1);
        StatusLine line{terminal()};
        EXPECT_FALSE(line.is_visible());
        line.show("one");
    }
    EXPECT_EQ(written(), "");
}

TEST(StatusLine, IsNotShownOnAPipe)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe(ends.data()), 0);
    const tools::Descriptor out{ends[0]};
    {
        const tools::Descriptor in{ends[1]};
        StatusLine line{in.get()};
        EXPECT_FALSE(line.is_visible());
        line.show("one");
    }
    char byte = 0;
    EXPECT_EQ(::read(out.get(), &byte, 1), 0);
}

}  // namespace
}  // namespace nimba::smi
