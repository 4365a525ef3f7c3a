// SPDX-License-Identifier: MIT
// A pass over the devices that fails ends at once and leaves what it has collected.
#include "collector_fixture.hpp"
#include "support/planned_reads.hpp"

#include <filesystem>
#include <stdexcept>

ssize_t read_of_this_program(int fd, void* buffer, std::size_t size)
{
    return nimba::test::PlannedReads::read(fd, buffer, size);
}

namespace nimba::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* kNoProcessId = "Fail to read pid info. skip...\n";

class FailedPageTablePass : public CollectorTest {
  protected:
    // Devices "1", "2" and "3"; a test breaks the second.
    FailedPageTablePass()
    {
        add("1", "101");
        add("2", "102");
        add("3", "103");
    }

    void expect_failure_at_second(const std::string& output, const std::string& calls)
    {
        collect_once();
        EXPECT_EQ(status_, -1);
        EXPECT_EQ(processes(), (Texts{"101: process 101"}));
        EXPECT_EQ(output_, output);
        EXPECT_EQ(ps_.take_calls(), calls);
    }
    fs::path second(const char* node) const { return driver_.devices() / "2" / node; }
};

TEST_F(FailedPageTablePass, HasNoDirectory)
{
    fs::remove_all(driver_.devices());
    collect_once();
    EXPECT_EQ(status_, -1);
    EXPECT_TRUE(devices_.empty());
    EXPECT_EQ(output_, "");
    EXPECT_EQ(ps_.take_calls(), "");
}

TEST_F(FailedPageTablePass, HasAFileForADirectory)
{
    fs::remove_all(driver_.devices());
    write_file(driver_.devices(), "");
    collect_once();
    EXPECT_EQ(status_, -1);
    EXPECT_TRUE(devices_.empty());
    EXPECT_EQ(output_, "");
}

TEST_F(FailedPageTablePass, HasAListingThatBreaksOff)
{
    {
        const BrokenDriverListing broken{1};
        expect_failure_at_second("", "-p 101 -o comm=\n");
    }
    devices_.clear();
    const BrokenDriverListing broken{0};
    collect_once();
    EXPECT_EQ(status_, -1);
    EXPECT_TRUE(devices_.empty());
}

TEST_F(FailedPageTablePass, HasAListingThatBreaksOffAtItsEnd)
{
    const BrokenDriverListing broken{3};
    collect_once();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(processes(), (Texts{"101: process 101", "102: process 102", "103: process 103"}));
}

TEST_F(FailedPageTablePass, HasADeviceWithoutInfo)
{
    fs::remove(second("info"));
    expect_failure_at_second(kNoProcessId, "-p 101 -o comm=\n");
}

TEST_F(FailedPageTablePass, HasADeviceWithoutADump)
{
    fs::remove(second("vm_info"));
    expect_failure_at_second("", "-p 101 -o comm=\n-p 102 -o comm=\n");
}

TEST_F(FailedPageTablePass, HasADeviceThatVanished)
{
    fs::remove_all(driver_.devices() / "2");
    expect_failure_at_second(kNoProcessId, "-p 101 -o comm=\n");
}

TEST_F(FailedPageTablePass, HasAnEntryThatIsNoDevice)
{
    fs::remove_all(driver_.devices() / "2");
    write_file(driver_.devices() / "2", "pid = 102\n");
    expect_failure_at_second(kNoProcessId, "-p 101 -o comm=\n");
}

TEST_F(FailedPageTablePass, HasAnInfoThatCannotBeRead)
{
    const PlannedReads reads{
        {.node = "devices/2/info", .bytes_before_failure = 0, .error = EIO, .failures = 1000}};
    expect_failure_at_second(kNoProcessId, "-p 101 -o comm=\n");
    EXPECT_LT(reads.failures_left(), 1000);
}

TEST_F(FailedPageTablePass, HasADirectoryForAnInfo)
{
    fs::remove(second("info"));
    fs::create_directory(second("info"));
    expect_failure_at_second(kNoProcessId, "-p 101 -o comm=\n");
}

TEST_F(FailedPageTablePass, HasADumpThatCannotBeReadToItsEnd)
{
    for (const std::size_t bytes :
         {std::size_t{0}, std::size_t{10}, std::string{kOneEntry}.size()}) {
        devices_.clear();
        const PlannedReads reads{{.node = "devices/2/vm_info",
                                  .bytes_before_failure = bytes,
                                  .error = EIO,
                                  .failures = 1000}};
        expect_failure_at_second("", "-p 101 -o comm=\n-p 102 -o comm=\n");
        EXPECT_LT(reads.failures_left(), 1000) << bytes;
    }
}

TEST_F(FailedPageTablePass, IsNotOneWhoseReadsWereOnlyInterrupted)
{
    const PlannedReads reads{
        {.node = "devices/2/vm_info", .bytes_before_failure = 5, .error = EINTR, .failures = 3}};
    collect_once();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(processes(), (Texts{"101: process 101", "102: process 102", "103: process 103"}));
    EXPECT_EQ(in_short(devices_[1].pt_level0), (Texts{"0:7 1000 root"}));
}

TEST_F(FailedPageTablePass, CannotAskForAName)
{
    const NoCommands none;
    collect_once();
    EXPECT_EQ(status_, -1);
    EXPECT_TRUE(devices_.empty());
    EXPECT_EQ(output_, "");
    EXPECT_EQ(ps_.take_calls(), "");
}

TEST_F(FailedPageTablePass, IsNotOneThatHasNoNameToAskFor)
{
    driver_.forget_devices();
    add("9", "0");
    const NoCommands none;
    collect_once();
    EXPECT_EQ(status_, 0);
    EXPECT_TRUE(devices_.empty());
}

TEST_F(FailedPageTablePass, ReportsAMissingInfoBeforeAMissingDump)
{
    fs::remove(second("info"));
    fs::remove(second("vm_info"));
    expect_failure_at_second(kNoProcessId, "-p 101 -o comm=\n");
}

TEST_F(FailedPageTablePass, LeavesWithTheErrorOfANumber)
{
    write_file(second("vm_info"), "0:x: entry addr:1000, buffer:root\n");
    EXPECT_THROW(collect_once(), std::invalid_argument);
    EXPECT_EQ(processes(), (Texts{"101: process 101"}));

    write_file(second("vm_info"), "0:2147483648: entry addr:1000, buffer:root\n");
    EXPECT_THROW(collect_once(), std::out_of_range);
    EXPECT_EQ(processes(), (Texts{"101: process 101", "101: process 101"}));
}

TEST_F(FailedPageTablePass, CanBeFollowedByOneThatSucceeds)
{
    fs::remove(second("info"));
    expect_failure_at_second(kNoProcessId, "-p 101 -o comm=\n");
    write_file(second("info"), "pid = 102\n");
    collect_once();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(processes(), (Texts{"101: process 101", "101: process 101", "102: process 102",
                                  "103: process 103"}));
}

}  // namespace
}  // namespace nimba::test
