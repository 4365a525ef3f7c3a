// SPDX-License-Identifier: MIT
#include "tools/smi/text/atomic_file.hpp"

#include "support/file_size_limit.hpp"
#include "support/temp_directory.hpp"

#include <fcntl.h>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
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

// Writes a file into the directory, with a signal to the process at the moment at which the first
// file appears there: in the middle of writing.
[[noreturn]] void write_and_be_told_to_end(const fs::path& directory, int signal)
{
    const rlimit no_core{};
    ::setrlimit(RLIMIT_CORE, &no_core);
    std::signal(signal, SIG_DFL);
    const int watched = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (::fcntl(watched, F_SETSIG, signal) != 0 || ::fcntl(watched, F_NOTIFY, DN_CREATE) != 0) {
        std::perror("F_NOTIFY");
        std::_Exit(1);
    }
    write_file(directory / "a.svg", "one");
    std::_Exit(0);
}

TEST_F(AtomicFile, IsNotLeftHalfWhenASignalEndsTheProcess)
{
    for (const int signal :
         {SIGHUP, SIGINT, SIGQUIT, SIGUSR1, SIGUSR2, SIGPIPE, SIGALRM, SIGTERM, SIGSTKFLT, SIGXCPU,
          SIGXFSZ, SIGVTALRM, SIGPROF, SIGIO, SIGPWR, SIGRTMIN, SIGRTMAX}) {
        EXPECT_EXIT(write_and_be_told_to_end(directory_.path(), signal),
                    testing::KilledBySignal(signal), "^$");
        EXPECT_EQ(test::read_file(path("a.svg")), "one");
        EXPECT_EQ(entries(), 1);
        fs::remove(path("a.svg"));
    }
}

TEST_F(AtomicFile, IsNotLeftHalfWhenThereIsNoRoomAndThatEndsTheProcess)
{
    const auto write = [this] {
        const test::FileSizeLimit limit{100};
        const rlimit no_core{};
        ::setrlimit(RLIMIT_CORE, &no_core);
        std::signal(SIGXFSZ, SIG_DFL);
        write_file(path("a.svg"), std::string(1000, 'x'));
    };
    EXPECT_EXIT(write(), testing::KilledBySignal(SIGXFSZ), "^$");
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
