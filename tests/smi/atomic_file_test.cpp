// SPDX-License-Identifier: MIT
#include "tools/smi/text/atomic_file.hpp"

#include "support/file_size_limit.hpp"
#include "support/temp_directory.hpp"

#include <unistd.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace nimba::smi {
namespace {

namespace fs = std::filesystem;

class AtomicFile : public testing::Test {
  protected:
    [[nodiscard]] fs::path path(const char* name) const { return directory_.path() / name; }
    [[nodiscard]] std::ptrdiff_t entries() const
    {
        return std::distance(fs::directory_iterator{directory_.path()}, {});
    }

    const test::TempDirectory directory_;
};

TEST_F(AtomicFile, HasTheTextAndNothingIsLeftBeside)
{
    EXPECT_EQ(write_file(path("a.svg"), "one"), 0);
    EXPECT_EQ(write_file(path("a.svg"), "two"), 0);
    EXPECT_EQ(test::read_file(path("a.svg")), "two");
    EXPECT_EQ(entries(), 1);
}

TEST_F(AtomicFile, MayHaveALongName)
{
    const std::string longest(255, 'a');
    EXPECT_EQ(write_file(path(longest.c_str()), "one"), 0);
    EXPECT_EQ(test::read_file(path(longest.c_str())), "one");
    EXPECT_EQ(write_file(path((longest + 'a').c_str()), "one"), ENAMETOOLONG);
    EXPECT_EQ(entries(), 1);
}

TEST_F(AtomicFile, KeepsThePermissionsOfTheOneBefore)
{
    test::write_file(path("a.svg"), "one");
    fs::permissions(path("a.svg"), fs::perms{0640});
    EXPECT_EQ(write_file(path("a.svg"), "two"), 0);
    EXPECT_EQ(fs::status(path("a.svg")).permissions(), fs::perms{0640});
}

TEST_F(AtomicFile, StaysAsItWasWhenThereIsNoRoom)
{
    test::write_file(path("a.svg"), "one");
    const test::FileSizeLimit limit{100};
    EXPECT_EQ(write_file(path("a.svg"), std::string(1000, 'x')), EFBIG);
    EXPECT_EQ(test::read_file(path("a.svg")), "one");
    EXPECT_EQ(write_file(path("b.svg"), std::string(1000, 'x')), EFBIG);
    EXPECT_EQ(entries(), 1);
}

// Writes until there is no more room; then the process is told to end, in the middle of the file.
[[noreturn]] void write_until_told_to_end(const std::string& path, int signal)
{
    static int told = 0;
    told = signal;
    std::signal(signal, SIG_DFL);
    const test::FileSizeLimit limit{100};
    std::signal(SIGXFSZ, [](int) { ::kill(::getpid(), told); });
    write_file(path, std::string(1000, 'x'));
    std::_Exit(0);
}

TEST_F(AtomicFile, IsNotLeftHalfWhenASignalEndsTheProcess)
{
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
        EXPECT_EXIT(write_until_told_to_end(path("a.svg").string(), signal),
                    testing::KilledBySignal(signal), "");
    }
    EXPECT_EQ(entries(), 0);
}

TEST_F(AtomicFile, NeedsADirectory)
{
    EXPECT_EQ(write_file(path("absent/a.svg"), "one"), ENOENT);
}

TEST_F(AtomicFile, GoesToWhereALinkLeads)
{
    test::write_file(path("a.svg"), "one");
    fs::create_symlink("a.svg", path("link"));
    EXPECT_EQ(write_file(path("link"), "two"), 0);
    EXPECT_TRUE(fs::is_symlink(path("link")));
    EXPECT_EQ(test::read_file(path("a.svg")), "two");
}

TEST_F(AtomicFile, LeavesADeviceADevice)
{
    EXPECT_EQ(write_file("/dev/full", "one"), ENOSPC);
    EXPECT_TRUE(fs::is_character_file("/dev/full"));
    EXPECT_EQ(write_file("/dev/null", "one"), 0);
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

}  // namespace
}  // namespace nimba::smi
