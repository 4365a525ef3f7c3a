// SPDX-License-Identifier: MIT
// Passes that fail are tried again, and what they read stays.
#include "allocation_reader_fixture.hpp"

#include <filesystem>
#include <functional>

namespace nimba::test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

std::string repeated(const std::string& text, int count)
{
    std::string all;
    for (int i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

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

using AllocationRetry = AllocationReader;

TEST_F(AllocationRetry, IsNotMadeBehindASuccess)
{
    add_numbered(2);
    const ListedAs listed{{"2", "1"}};
    read();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(handles(), (Names{"2", "1"}));
    EXPECT_EQ(take_pauses(), Pauses{});
    EXPECT_EQ(output_, "");
}

TEST_F(AllocationRetry, IsNotMadeForAnEmptyList)
{
    read();
    EXPECT_EQ(status_, 0);
    EXPECT_TRUE(list_.empty());
    EXPECT_EQ(take_pauses(), Pauses{});
}

TEST_F(AllocationRetry, IsMadeUntilTenPassesHaveFailed)
{
    add_numbered(2);
    const ListedAs listed{{"2", "1", "gone"}};
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, repeated("Fail to read allocation info. skip...\n", 10));
    EXPECT_EQ(handles(), (Names{"2", "1", "2", "1", "2", "1", "2", "1", "2", "1",
                                "2", "1", "2", "1", "2", "1", "2", "1", "2", "1"}));
    EXPECT_EQ(take_pauses(), Pauses(10, 5000us));
}

TEST_F(AllocationRetry, IsMadeForADirectoryThatDoesNotOpen)
{
    fs::remove(tree_.allocations());
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, repeated("Error opening directory\n", 10));
    EXPECT_TRUE(list_.empty());
    EXPECT_EQ(take_pauses(), Pauses(10, 5000us));
}

TEST_F(AllocationRetry, IsMadeForAListingThatBreaksOff)
{
    add_numbered(2);
    const ListedAs listed{{"1", "2"}};
    {
        const BrokenListing broken{1};
        read();
    }
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(handles(), (Names{"1"}));
    EXPECT_EQ(take_pauses(), Pauses(10, 5000us));
}

TEST_F(AllocationRetry, ThatSucceedsHoldsWhatTheFailedPassesRead)
{
    add_numbered(2);
    const ListedAs listed{{"1", "2", "3"}};
    const DuringPause second{2, [&] { tree_.add("3", "handle=3\n"); }};
    read();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(handles(), (Names{"1", "2", "1", "2", "1", "2", "3"}));
    EXPECT_EQ(output_, repeated("Fail to read allocation info. skip...\n", 2));
    EXPECT_EQ(take_pauses(), Pauses(2, 5000us));
}

TEST_F(AllocationRetry, ThatSucceedsStandsBehindWhatWasInTheList)
{
    add_numbered(1);
    list_ = {allocation(0xa)};
    const ListedAs listed{{"1", "3"}};
    const DuringPause first{1, [&] { tree_.add("3", "handle=3\n"); }};
    read();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(handles(), (Names{"a", "1", "1", "3"}));
    EXPECT_EQ(list_.front(), allocation(0xa));
}

TEST_F(AllocationRetry, MaySucceedAtTheTenthPass)
{
    const ListedAs listed{{"3"}};
    const DuringPause ninth{9, [&] { tree_.add("3", "handle=3\n"); }};
    read();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(handles(), (Names{"3"}));
    EXPECT_EQ(output_, repeated("Fail to read allocation info. skip...\n", 9));
    EXPECT_EQ(take_pauses(), Pauses(9, 5000us));
}

TEST_F(AllocationRetry, IsNotMadeBehindTheTenthPass)
{
    const ListedAs listed{{"3"}};
    const DuringPause tenth{10, [&] { tree_.add("3", "handle=3\n"); }};
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_TRUE(list_.empty());
    EXPECT_EQ(take_pauses(), Pauses(10, 5000us));
}

TEST_F(AllocationRetry, MayFailInAnotherWayEachTime)
{
    fs::remove(tree_.allocations());
    const DuringPause third{3, [&] {
                                fs::create_directory(tree_.allocations());
                                tree_.add_without_info("gone");
                            }};
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, repeated("Error opening directory\n", 3) +
                           repeated("Fail to read allocation info. skip...\n", 7));
}

TEST_F(AllocationRetry, KeepsToTheKindOfTheDriver)
{
    for (const auto& [va_driver, device] : {std::pair{1, 16}, std::pair{0, 22}}) {
        list_.clear();
        tree_.remove_all();
        const ListedAs listed{{"3"}};
        const DuringPause first{1, [&] { tree_.add("3", "device=16\n"); }};
        read(va_driver);
        EXPECT_EQ(status_, 0);
        EXPECT_EQ(list_, Records{with(blank(), &Record::device, device)});
    }
}

TEST_F(AllocationRetry, LetsAnErrorOfAValueThrough)
{
    add_numbered(1);
    const ListedAs listed{{"1", "3"}};
    const DuringPause first{1, [&] { tree_.add("3", "handle=\n"); }};
    EXPECT_THROW(read(), std::invalid_argument);
    EXPECT_EQ(handles(), (Names{"1", "1"}));
    EXPECT_EQ(take_pauses(), Pauses(1, 5000us));
}

}  // namespace
}  // namespace nimba::test
