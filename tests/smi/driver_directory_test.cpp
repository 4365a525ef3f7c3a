// SPDX-License-Identifier: MIT
#include "tools/smi/worker/driver_directory.hpp"

#include "ordinary_user.hpp"
#include "support/temp_directory.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

namespace nimba::smi {
namespace {

namespace fs = std::filesystem;

class DriverDirectory : public testing::Test {
  protected:
    DriverDirectory()
    {
        fs::permissions(directory_.path(), fs::perms{0755});
        for (const char* const entry : {"1", "2"}) {
            fs::create_directory(directory_.path() / entry);
            directory_.write(std::string{entry} + "/info", "handle=1\n");
        }
        directory_.write("1/1", "pid = 1\n");
    }

    [[nodiscard]] std::string path() const { return directory_.path().string(); }

    const test::TempDirectory directory_;
};

TEST_F(DriverDirectory, ThatCanBeReadHasNoFault)
{
    EXPECT_EQ(first_fault(path(), "info"), std::nullopt);
    EXPECT_EQ(entries_in(path()), 2U);
}

TEST_F(DriverDirectory, NodesThatHaveGoneAreNoFault)
{
    EXPECT_EQ(first_fault(path(), kLikeEntry), std::nullopt);
}

TEST_F(DriverDirectory, NamesTheNodeThatIsClosed)
{
    const FileFault fault{path() + "/2/info", EACCES};
    fs::permissions(fault.path, fs::perms{0});
    EXPECT_TRUE(holds_for_ordinary_user([&] { return first_fault(path(), "info") == fault; }));
}

TEST_F(DriverDirectory, NamesTheNodeThatCannotBeRead)
{
    fs::remove(directory_.path() / "2/info");
    fs::create_directory(directory_.path() / "2/info");
    EXPECT_EQ(first_fault(path(), "info"), (FileFault{path() + "/2/info", EISDIR}));
}

TEST_F(DriverDirectory, NamesItselfWhenItIsNotThere)
{
    EXPECT_EQ(first_fault(path() + "/absent", "info"), (FileFault{path() + "/absent", ENOENT}));
    EXPECT_EQ(entries_in(path() + "/absent"), 0U);
}

TEST(DriverFault, IsASentenceWithAStatus)
{
    const auto denied = describe_fault(FileFault{"/d/1/info", EPERM}, "/d", "allocations");
    EXPECT_EQ(denied.status, ExitStatus::kNoPermission);
    EXPECT_EQ(denied.text, "no permission to read /d/1/info: run as root");
    const auto gone = describe_fault(FileFault{"/d", ENOENT}, "/d", "allocations");
    EXPECT_EQ(gone.status, ExitStatus::kNoAdapter);
    EXPECT_EQ(gone.text,
              "there is no directory /d: the driver does not show its allocations, or the adapter "
              "is gone (see dmesg)");
    const auto broken = describe_fault(FileFault{"/d/1/info", EIO}, "/d", "allocations");
    EXPECT_EQ(broken.status, ExitStatus::kNoAdapter);
    EXPECT_EQ(broken.text, "cannot read /d/1/info: Input/output error (see dmesg)");
    const auto restless = describe_fault(std::nullopt, "/d", "device contexts");
    EXPECT_EQ(restless.status, ExitStatus::kNoAdapter);
    EXPECT_EQ(restless.text,
              "the device contexts in /d cannot be read as a whole: they come and go too fast, or "
              "an entry has no node; run the command again");
}

}  // namespace
}  // namespace nimba::smi
