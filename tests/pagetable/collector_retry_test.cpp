// SPDX-License-Identifier: MIT
// Passes over the devices that fail are made again, and what they collected stays.
#include "collector_fixture.hpp"

#include <filesystem>
#include <functional>
#include <stdexcept>
#include <utility>

namespace nimba::test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr const char* kNoProcessId = "Fail to read pid info. skip...\n";
constexpr const char* kNoAllocation = "Fail to read allocation info.. skip and try it again...\n";
constexpr const char* kNode =
    "=====vm node info=====\ndevice_pid = 101\ndevice_pname = viewer\ngpu_va = 100000000\n"
    "size = 40000\n";

// In its scope `action` runs once, in the pause of this number, from 1 on.
class DuringPause final {
  public:
    DuringPause(int number, std::function<void()> action)
        : pauses_left_{number}, action_{std::move(action)}
    {
    }

  private:
    int pauses_left_;
    std::function<void()> action_;
    const DuringPauses pauses_{[this] {
        if (--pauses_left_ == 0) {
            action_();
        }
    }};
};

class PageTableRetry : public CollectorTest {
  protected:
    // The device `name` is listed already.
    void restore(const std::string& name, const std::string& pid)
    {
        fs::create_directories(driver_.devices() / name);
        write_file(driver_.devices() / name / "info", "pid = " + pid + "\n");
        write_file(driver_.devices() / name / "vm_info", kOneEntry);
    }

    // Handles of the collected allocations.
    Texts handles() const
    {
        Texts found;
        for (const allcation_Info& allocation : allocations_) {
            found.push_back(allocation.allocation_handle);
        }
        return found;
    }
};

TEST_F(PageTableRetry, IsNotMadeBehindASuccess)
{
    add("1", "101");
    collect();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(processes(), (Texts{"101: process 101"}));
    EXPECT_EQ(take_pauses(), Pauses{});
}

TEST_F(PageTableRetry, IsNotMadeForNoDevices)
{
    collect();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(take_pauses(), Pauses{});
}

TEST_F(PageTableRetry, IsMadeUntilTenPassesHaveFailed)
{
    add("1", "101");
    driver_.list_device("gone");
    collect();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(processes(), Texts(10, "101: process 101"));
    EXPECT_EQ(output_, repeated(kNoProcessId, 10));
    EXPECT_EQ(take_pauses(), Pauses(10, 1000us));
}

TEST_F(PageTableRetry, IsMadeForADirectoryThatIsNotThere)
{
    fs::remove_all(driver_.devices());
    collect();
    EXPECT_EQ(status_, -1);
    EXPECT_TRUE(devices_.empty());
    EXPECT_EQ(output_, "");
    EXPECT_EQ(take_pauses(), Pauses(10, 1000us));
}

TEST_F(PageTableRetry, IsMadeForAListingThatBreaksOff)
{
    add("1", "101");
    const BrokenDriverListing broken{1};
    collect();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(processes(), Texts(10, "101: process 101"));
    EXPECT_EQ(take_pauses(), Pauses(10, 1000us));
}

TEST_F(PageTableRetry, IsMadeForACommandThatCannotBeStarted)
{
    add("1", "101");
    const NoCommands none;
    collect();
    EXPECT_EQ(status_, -1);
    EXPECT_TRUE(devices_.empty());
    EXPECT_EQ(take_pauses(), Pauses(10, 1000us));
}

TEST_F(PageTableRetry, ThatSucceedsHoldsWhatTheFailedPassesCollected)
{
    add("1", "101");
    driver_.list_device("2");
    const DuringPause second{2, [&] { restore("2", "102"); }};
    collect();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(processes(), (Texts{"101: process 101", "101: process 101", "101: process 101",
                                  "102: process 102"}));
    EXPECT_EQ(output_, repeated(kNoProcessId, 2));
    EXPECT_EQ(take_pauses(), Pauses(2, 1000us));
}

TEST_F(PageTableRetry, HelpsADirectoryThatComesLate)
{
    fs::remove_all(driver_.devices());
    const DuringPause first{1, [&] { add("1", "101"); }};
    collect();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(processes(), (Texts{"101: process 101"}));
    EXPECT_EQ(take_pauses(), Pauses(1, 1000us));
}

TEST_F(PageTableRetry, HelpsADumpThatComesLate)
{
    add("1", "101");
    fs::remove(driver_.devices() / "1" / "vm_info");
    const DuringPause first{1, [&] { restore("1", "101"); }};
    collect();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(processes(), (Texts{"101: process 101"}));
    EXPECT_EQ(output_, "");
    EXPECT_EQ(take_pauses(), Pauses(1, 1000us));
}

TEST_F(PageTableRetry, MaySucceedAtTheTenthPass)
{
    driver_.list_device("1");
    const DuringPause ninth{9, [&] { restore("1", "101"); }};
    collect();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(processes(), (Texts{"101: process 101"}));
    EXPECT_EQ(output_, repeated(kNoProcessId, 9));
    EXPECT_EQ(take_pauses(), Pauses(9, 1000us));
}

TEST_F(PageTableRetry, IsNotMadeBehindTheTenthPass)
{
    driver_.list_device("1");
    const DuringPause tenth{10, [&] { restore("1", "101"); }};
    collect();
    EXPECT_EQ(status_, -1);
    EXPECT_TRUE(devices_.empty());
    EXPECT_EQ(take_pauses(), Pauses(10, 1000us));
}

TEST_F(PageTableRetry, LetsAnErrorOfANumberThrough)
{
    driver_.list_device("1");
    const DuringPause first{1, [&] {
                                restore("1", "101");
                                write_file(driver_.devices() / "1" / "vm_info", "x:1: entry\n");
                            }};
    EXPECT_THROW(collect(), std::invalid_argument);
    EXPECT_EQ(take_pauses(), Pauses(1, 1000us));
}

TEST_F(PageTableRetry, IsNotMadeWhenBothCollectionsSucceed)
{
    add("1", "101");
    driver_.add_allocation("2a", kNode);
    collect_both();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(processes(), (Texts{"101: process 101"}));
    EXPECT_EQ(handles(), (Texts{"2a"}));
    EXPECT_EQ(allocations_[0].device_pid, "101");
    EXPECT_EQ(allocations_[0].device_pname, "viewer");
    EXPECT_EQ(allocations_[0].gpu_va, "100000000");
    EXPECT_EQ(allocations_[0].size, "40000");
    EXPECT_EQ(output_, "");
    EXPECT_EQ(take_pauses(), Pauses{});
}

TEST_F(PageTableRetry, OfAllocationsDoesNotKeepTheDevicesFromBeingCollected)
{
    add("1", "101");
    driver_.add_allocation("2a", kNode);
    driver_.list_allocation("gone");
    collect_both();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(processes(), (Texts{"101: process 101"}));
    EXPECT_EQ(handles(), Texts(10, "2a"));
    EXPECT_EQ(output_, repeated(kNoAllocation, 10));
    EXPECT_EQ(take_pauses(), Pauses(10, 1000us));
}

TEST_F(PageTableRetry, OfDevicesLeavesTheAllocationsCollected)
{
    driver_.list_device("gone");
    driver_.add_allocation("2a", kNode);
    collect_both();
    EXPECT_EQ(status_, -1);
    EXPECT_TRUE(devices_.empty());
    EXPECT_EQ(handles(), (Texts{"2a"}));
    EXPECT_EQ(take_pauses(), Pauses(10, 1000us));
}

TEST_F(PageTableRetry, IsMadeForTheAllocationsFirst)
{
    driver_.list_device("gone");
    driver_.list_allocation("gone");
    collect_both();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, repeated(kNoAllocation, 10) + repeated(kNoProcessId, 10));
    EXPECT_EQ(take_pauses(), Pauses(20, 1000us));
}

TEST_F(PageTableRetry, OfBothCollectionsMaySucceed)
{
    fs::remove_all(driver_.devices());
    fs::remove_all(driver_.allocations());
    int pauses = 0;
    const DuringPauses restoring{[&] {
        ++pauses;
        if (pauses == 3) {
            driver_.add_allocation("2a", kNode);
        } else if (pauses == 5) {
            add("1", "101");
        }
    }};
    collect_both();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(handles(), (Texts{"2a"}));
    EXPECT_EQ(processes(), (Texts{"101: process 101"}));
    EXPECT_EQ(take_pauses(), Pauses(5, 1000us));
}

TEST_F(PageTableRetry, AppendsToBothLists)
{
    add("1", "101");
    driver_.add_allocation("2a", kNode);
    collect_both();
    collect_both();
    EXPECT_EQ(processes(), (Texts{"101: process 101", "101: process 101"}));
    EXPECT_EQ(handles(), (Texts{"2a", "2a"}));
}

TEST_F(PageTableRetry, LeavesTheAllocationsWhenAnErrorOfANumberLeaves)
{
    driver_.add_device("1", "pid = 101\n", "0:: entry addr:1000, buffer:root\n");
    driver_.add_allocation("2a", kNode);
    EXPECT_THROW(collect_both(), std::invalid_argument);
    EXPECT_EQ(handles(), (Texts{"2a"}));
}

}  // namespace
}  // namespace nimba::test
