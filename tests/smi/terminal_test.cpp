// SPDX-License-Identifier: MIT
#include "tools/smi/text/terminal.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

TEST(Terminal, IsForUtf8WhenTheLocaleSaysSo)
{
    EXPECT_FALSE(is_utf8({}));
    EXPECT_TRUE(is_utf8({nullptr, nullptr, "en_US.UTF-8"}));
    EXPECT_TRUE(is_utf8({nullptr, "C.utf8", nullptr}));
    EXPECT_FALSE(is_utf8({nullptr, nullptr, "de_DE.ISO-8859-1"}));
    EXPECT_FALSE(is_utf8({nullptr, nullptr, "C"}));
}

TEST(Terminal, TakesTheFirstVariableThatIsNotEmpty)
{
    EXPECT_FALSE(is_utf8({"C", "C.UTF-8", "C.UTF-8"}));
    EXPECT_FALSE(is_utf8({"", "POSIX", "C.UTF-8"}));
    EXPECT_TRUE(is_utf8({"", "", "C.UTF-8"}));
}

TEST(Terminal, IsNotWhatIsNoTerminal)
{
    const int file = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    EXPECT_FALSE(shows_utf8(file));
    EXPECT_EQ(terminal_columns(file), std::nullopt);
    ::close(file);
}

}  // namespace
}  // namespace nimba::smi
