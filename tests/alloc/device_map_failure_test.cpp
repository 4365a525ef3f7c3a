// SPDX-License-Identifier: MIT
// What a device map holds when a directory or a node cannot be opened, listed or read.
#include "child_process.hpp"
#include "device_tree.hpp"
#include "directory_listing.hpp"
#include "support/descriptor.hpp"
#include "support/planned_reads.hpp"

#include <cerrno>

ssize_t read_of_this_program(int fd, void* buffer, std::size_t size)
{
    return nimba::test::PlannedReads::read(fd, buffer, size);
}

namespace nimba::test {
namespace {

constexpr const char* kNoDirectory = "Error opening directory\n";
constexpr const char* kNoNode = "Fail to read devices info. skip...\n";

using DeviceMapFailure = DeviceMapTest;

TEST_F(DeviceMapFailure, IsANodeThatOnlyTheOtherDriverHas)
{
    add("12", "12", "handle = c\n");
    list(1);
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, kNoNode);
    EXPECT_EQ(entries(0), Contexts{});

    std::filesystem::rename(devices() / "12" / "12", devices() / "12" / "info");
    list(0);
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, kNoNode);
    EXPECT_EQ(entries(0), Contexts{});
}

TEST_F(DeviceMapFailure, OfTheCurrentAdapterIsThatOfItsWorker)
{
    std::filesystem::remove(devices());
    output_ = stdout_of([&] { status_ = get_device_pid_maps(&map_); });
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, kNoDirectory);
    EXPECT_EQ(entries(0), Contexts{});
}

TEST_F(DeviceMapFailure, LeavesAllZeroWhenTheDirectoryCannotBeOpened)
{
    std::filesystem::remove(devices());
    const auto before = open_descriptors();
    list();
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, kNoDirectory);
    EXPECT_EQ(entries(0), Contexts{});

    tree_.write("devices", "a file");
    std::memset(&map_, 0xa5, sizeof map_);
    list();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, kNoDirectory);
    EXPECT_EQ(entries(0), Contexts{});
}

TEST_F(DeviceMapFailure, KeepsTheEntriesBeforeANodeThatCannotBeOpened)
{
    add_numbered(3);
    const auto before = open_descriptors();
    {
        const ListedAs order{{"2", "1", "missing", "0"}};
        list();
    }
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, kNoNode);
    EXPECT_EQ(entries(2), (Contexts{{0, 2, ""}, {0, 1, ""}}));
}

TEST_F(DeviceMapFailure, IsAnEntryThatIsNoDirectory)
{
    write_file(devices() / "file", "handle = 1\n");
    for (const std::int32_t va_driver : {0, 1}) {
        list(va_driver);
        EXPECT_EQ(status_, -1);
        EXPECT_EQ(output_, kNoNode);
        EXPECT_EQ(entries(0), Contexts{});
    }
}

TEST_F(DeviceMapFailure, KeepsTheEntriesBeforeANodeThatCannotBeRead)
{
    add_numbered(2);
    std::filesystem::create_directories(devices() / "broken" / "info");
    const auto before = open_descriptors();
    {
        const ListedAs order{{"1", "broken", "0"}};
        list();
    }
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, kNoNode);
    EXPECT_EQ(entries(1), (Contexts{{0, 1, ""}}));
}

TEST_F(DeviceMapFailure, ComesBeforeAnyAdapterIsCurrent)
{
    if (std::filesystem::exists("/devices")) {
        GTEST_SKIP() << "this machine has a directory /devices";
    }
    add_numbered(1);
    sys_kernel_debug_ID_dri_ADAPTER_path[0] = '\0';
    output_ = stdout_of([&] { status_ = get_device_pid_maps(&map_); });
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, kNoDirectory);
    EXPECT_EQ(entries(0), Contexts{});
}

TEST_F(DeviceMapFailure, HasNoMessageWhenTheListingBreaksOff)
{
    add_numbered(5);
    for (const int error : {EIO, ENOMEM, ESTALE, EBADF}) {
        SCOPED_TRACE(error);
        std::memset(&map_, 0xa5, sizeof map_);
        const auto before = open_descriptors();
        {
            const ListedAs order{{"0", "1", "2", "3", "4"}};
            const BrokenListing broken{2, SIZE_MAX, error};
            list();
        }
        EXPECT_EQ(open_descriptors(), before);
        EXPECT_EQ(status_, -1);
        EXPECT_EQ(output_, "");
        EXPECT_EQ(entries(2), (Contexts{{0, 0, ""}, {0, 1, ""}}));
    }
}

// A node of more than 20 and of more than 8192 bytes, which tells its process and its handle first
// of all.
std::string long_node(int pid)
{
    std::string text = "pid = " + std::to_string(pid) + "\nhandle = 1f\n";
    while (text.size() < 20'000) {
        text += "flags = 0x3\n";
    }
    return text + "handle = 2f\n";
}

TEST_F(DeviceMapFailure, InTheMiddleOfANodeLeavesItsEntryZero)
{
    const NamedProcess process{{"/bin/app"}};
    add_numbered(2);
    add("broken", long_node(process.pid()));
    for (const std::size_t bytes : {0U, 20U, 8'192U, 8'193U, 12'000U}) {
        SCOPED_TRACE(bytes);
        std::memset(&map_, 0xa5, sizeof map_);
        const auto before = open_descriptors();
        {
            const ListedAs order{{"1", "broken", "0"}};
            const PlannedReads reads{{.node = "/broken/info",
                                      .bytes_before_failure = bytes,
                                      .error = EIO,
                                      .failures = 1}};
            list();
            EXPECT_EQ(reads.failures_left(), 0);
        }
        EXPECT_EQ(open_descriptors(), before);
        EXPECT_EQ(status_, -1);
        EXPECT_EQ(output_, kNoNode);
        EXPECT_EQ(entries(1), (Contexts{{0, 1, ""}}));
    }
}

TEST_F(DeviceMapFailure, IsNoInterruptionOfARead)
{
    const NamedProcess process{{"/bin/app"}};
    add("long", long_node(process.pid()));
    for (const std::size_t bytes : {0U, 20U, 8'192U, 12'000U}) {
        SCOPED_TRACE(bytes);
        const PlannedReads reads{
            {.node = "/long/info", .bytes_before_failure = bytes, .error = EINTR, .failures = 3}};
        list();
        EXPECT_EQ(reads.failures_left(), 0);
        EXPECT_EQ(status_, 0);
        EXPECT_EQ(output_, "");
        EXPECT_EQ(entries(1), (Contexts{{process.pid(), 0x2f, "/bin/app"}}));
    }
}

}  // namespace
}  // namespace nimba::test
