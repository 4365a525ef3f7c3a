// SPDX-License-Identifier: MIT
// What programs see of a whole driver, mounted, while faults are switched on.
#include "driver/live_driver.hpp"
#include "driver/served_driver.hpp"
#include "memory_tables.hpp"
#include "support/descriptor.hpp"
#include "support/temp_directory.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <memory>
#include <string>
#include <utility>

namespace nimba::sim::test {
namespace {

using nimba::test::Descriptor;

// Card 2, at a moment that does not pass.
class DriverFaultsTest : public ::testing::Test {
  protected:
    void SetUp() override
    {
        Machine machine = machine_of(adapter("proc = \"Device ID : 1003\\n\"", ""));
        auto driver =
            std::make_shared<LiveDriver>(machine, [] { return std::chrono::nanoseconds{0}; });
        try {
            served_ = std::make_unique<ServedDriver>(std::move(driver), machine, directory_.path());
        } catch (const MountError& error) {
            GTEST_SKIP() << "no FUSE file system can be mounted here: " << error.what();
        }
    }

    std::string path(const std::string& node) const { return (directory_.path() / node).string(); }

    // Writes once; 0 or the error.
    int write(const std::string& node, std::string_view text) const
    {
        const Descriptor file{::open(path(node).c_str(), O_WRONLY)};
        return ::write(file.get(), text.data(), text.size()) < 0 ? errno : 0;
    }

    void fault(const std::string& text) { ASSERT_EQ(write(".nimba-sim-faults", text), 0); }

    // The text, or "errno N" behind what could be read.
    static std::string read(int fd)
    {
        std::string text;
        std::array<char, 4096> part{};
        ssize_t length = 0;
        while ((length = ::read(fd, part.data(), part.size())) > 0) {
            text.append(part.data(), static_cast<std::size_t>(length));
        }
        return length < 0 ? text + "errno " + std::to_string(errno) : text;
    }

    // The text of what was opened, or why it was not.
    static std::string read_opened(int fd)
    {
        return fd < 0 ? "errno " + std::to_string(errno) : read(Descriptor{fd}.get());
    }

    std::string read(const std::string& node) const
    {
        return read_opened(::open(path(node).c_str(), O_RDONLY));
    }

    // As the library reads: a node of a directory that it has open.
    static std::string read_at(const Descriptor& directory, const char* name)
    {
        return read_opened(::openat(directory.get(), name, O_RDONLY));
    }

    Descriptor open_directory(const std::string& node) const
    {
        return Descriptor{::open(path(node).c_str(), O_RDONLY | O_DIRECTORY)};
    }

    // How many entries there are; "errno N" if the listing fails.
    std::string count(const std::string& node) const
    {
        DIR* const stream = ::opendir(path(node).c_str());
        if (stream == nullptr) {
            return "errno " + std::to_string(errno);
        }
        int entries = 0;
        errno = 0;
        while (::readdir(stream) != nullptr) {
            ++entries;
        }
        const int error = errno;
        ::closedir(stream);
        return error == 0 ? std::to_string(entries) : "errno " + std::to_string(error);
    }

    nimba::test::TempDirectory directory_;
    std::unique_ptr<ServedDriver> served_;
};

TEST_F(DriverFaultsTest, EachKindBefallsANodeOfTheInfoDirectory)
{
    EXPECT_EQ(read("info/2/dvfs_level"), "dvfs_level:balance\n");
    fault(
        "kind = \"open\"\ndirectory = \"info\"\npath = \"dvfs_level\"\nerror = \"EMFILE\"\nfirst = "
        "1\n");
    EXPECT_EQ(read("info/2/dvfs_level"), "errno 24");
    fault("kind = \"read\"\ndirectory = \"info\"\npath = \"dvfs_level\"\nbytes = 4\nfirst = 1\n");
    EXPECT_EQ(read("info/2/dvfs_level"), "dvfserrno 5");
    fault(
        "kind = \"garbage\"\ndirectory = \"info\"\npath = \"dvfs_level\"\nbytes = 9\nfirst = 1\n");
    EXPECT_EQ(read("info/2/dvfs_level").size(), 9U);
    fault("kind = \"block\"\ndirectory = \"info\"\npath = \"dvfs_level\"\nms = 1\nfirst = 1\n");
    EXPECT_EQ(read("info/2/dvfs_level"), "dvfs_level:balance\n");
    fault(
        "kind = \"write\"\ndirectory = \"info\"\npath = \"dvfs_level\"\nerror = \"EBUSY\"\nfirst = "
        "1\n");
    EXPECT_EQ(write("info/2/dvfs_level", "lowpower\n"), EBUSY);
    EXPECT_EQ(read("info/2/dvfs_level"), "dvfs_level:balance\n");
    fault("kind = \"list\"\ndirectory = \"info\"\nerror = \"ENOMEM\"\nfirst = 1\n");
    EXPECT_EQ(count("info/2"), "errno 12");
    EXPECT_EQ(count("info/2"), "32");  // with the dots
    fault("kind = \"vanish\"\ndirectory = \"info\"\npath = \"dvfs_level\"\n");
    EXPECT_EQ(read("info/2/dvfs_level"), "errno 2");
    EXPECT_EQ(count("info/2"), "31");
    EXPECT_EQ(read("info/2/dvfs_mode"), "dvfs_mode:0x1\n");
}

TEST_F(DriverFaultsTest, ShortReadsBefallNodesOfHwmon)
{
    fault("kind = \"short\"\ndirectory = \"hwmon\"\npath = \"name\"\nbytes = 2\n");
    const Descriptor file{::open(path("hwmon/2/hwmon2/name").c_str(), O_RDONLY)};
    std::array<char, 16> part{};
    EXPECT_EQ(::read(file.get(), part.data(), part.size()), 2);
    EXPECT_EQ(::read(file.get(), part.data(), part.size()), 1);
}

TEST_F(DriverFaultsTest, FaultOfProcNeedsNoPath)
{
    fault("kind = \"read\"\ndirectory = \"proc\"\nbytes = 6\nerror = \"ENODEV\"\nfirst = 1\n");
    EXPECT_EQ(read("proc/gpuinfo_2"), "Deviceerrno 19");
    EXPECT_EQ(read("proc/gpuinfo_2"), "Device ID : 1003\n");
    fault("kind = \"vanish\"\ndirectory = \"proc\"\n");
    EXPECT_EQ(read("proc/gpuinfo_2"), "errno 2");
}

TEST_F(DriverFaultsTest, DriverThatIsGoneLeavesNoNodeAndItsOpenDirectoriesDead)
{
    const Descriptor info = open_directory("info/2");
    const Descriptor hwmon = open_directory("hwmon/2/hwmon2");
    const Descriptor node{::open(path("info/2/dvfs_level").c_str(), O_RDWR)};
    EXPECT_EQ(read_at(info, "dvfs_level"), "dvfs_level:balance\n");
    EXPECT_EQ(read_at(hwmon, "name"), "jw\n");

    fault("kind = \"gone\"\nadapter = 2\n");
    for (const char* place :
         {"dri/2/jw/info", "info/2/dvfs_level", "hwmon/2/hwmon2/name", "proc/gpuinfo_2"}) {
        EXPECT_EQ(read(place), "errno 2") << place;
    }
    EXPECT_EQ(read_at(info, "dvfs_level"), "errno 2");
    EXPECT_EQ(read_at(hwmon, "name"), "errno 2");
    EXPECT_EQ(read(node.get()), "errno 19");
    EXPECT_EQ(::write(node.get(), "lowpower\n", 9), -1);
    EXPECT_EQ(errno, ENODEV);

    ASSERT_EQ(write(".nimba-sim-faults", "clear\n"), 0);
    EXPECT_EQ(read("info/2/dvfs_level"), "dvfs_level:balance\n");
    EXPECT_EQ(read("hwmon/2/hwmon2/name"), "jw\n");
    EXPECT_EQ(read_at(info, "dvfs_level"), "errno 2");
    EXPECT_EQ(read_at(hwmon, "name"), "errno 2");
    EXPECT_EQ(read(node.get()), "errno 19");
    EXPECT_EQ(read_at(open_directory("info/2"), "dvfs_level"), "dvfs_level:balance\n");
}

TEST_F(DriverFaultsTest, NodeOfADriverThatWasGoneCannotBeOpenedAgain)
{
    const Descriptor file{::open(path("info/2/dvfs_level").c_str(), O_PATH)};
    const Descriptor directory{::open(path("info/2").c_str(), O_PATH)};
    const auto again = [](const Descriptor& opened) {
        return "/proc/self/fd/" + std::to_string(opened.get());
    };
    ASSERT_EQ(read_opened(::open(again(file).c_str(), O_RDONLY)), "dvfs_level:balance\n");
    fault("kind = \"gone\"\n");
    ASSERT_EQ(write(".nimba-sim-faults", "clear\n"), 0);
    EXPECT_EQ(::open(again(file).c_str(), O_RDONLY), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(::open(again(directory).c_str(), O_RDONLY | O_DIRECTORY), -1);
    EXPECT_EQ(errno, ENOENT);
    struct stat status {};
    EXPECT_EQ(::fstat(directory.get(), &status), 0);
}

TEST_F(DriverFaultsTest, CommandsOfAllNodesAreLoggedInOrder)
{
    EXPECT_EQ(write("info/2/dvfs_level", "lowpower\n"), 0);
    EXPECT_EQ(write("info/2/power_mode", "odd"), EINVAL);
    EXPECT_EQ(write("dri/2/jw/info", "VA=0\n"), 0);
    EXPECT_EQ(read(".nimba-sim-commands"),
              "info/2/dvfs_level ok \"lowpower\\n\"\ninfo/2/power_mode EINVAL \"odd\"\n"
              "dri/2/jw/info ok \"VA=0\\n\"\n");
    EXPECT_EQ(write(".nimba-sim-commands", "clear\n"), 0);
    EXPECT_EQ(read(".nimba-sim-commands"), "");
}

TEST_F(DriverFaultsTest, AdapterOfAFaultMayHaveNoDebugDirectory)
{
    served_.reset();
    const Machine machine = machine_of(adapter("debug = false\ninfo = false\nhwmon = false", ""));
    ServedDriver served{std::make_shared<LiveDriver>(machine), machine, directory_.path()};
    EXPECT_EQ(write(".nimba-sim-faults", "kind = \"gone\"\nadapter = 3\n"), ENODEV);
    EXPECT_EQ(write(".nimba-sim-faults", "kind = \"gone\"\nadapter = 2\n"), 0);
    EXPECT_EQ(read("proc/gpuinfo_2"), "errno 2");
}

}  // namespace
}  // namespace nimba::sim::test
