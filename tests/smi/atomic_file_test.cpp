// SPDX-License-Identifier: MIT
#include "tools/smi/text/atomic_file.hpp"

#include "support/file_size_limit.hpp"
#include "support/temp_directory.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

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
