// SPDX-License-Identifier: MIT
// Passes over the virtual-memory nodes that fail are tried again, and what they read stays.
#include "support/descriptor.hpp"
#include "vm_node_fixture.hpp"

#include <functional>
#include <utility>

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

using VmNodeRetry = VmNodeReader;

TEST_F(VmNodeRetry, IsNotMadeBehindASuccess)
{
    add("a", block_at("1"));
    read();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(list_, (VmNodes{{"7", "app", "a", "1", "1000"}}));
    EXPECT_EQ(take_pauses(), Pauses{});
}

TEST_F(VmNodeRetry, IsNotMadeForAnEmptyList)
{
    read();
    EXPECT_EQ(status_, 0);
    EXPECT_TRUE(list_.empty());
    EXPECT_EQ(take_pauses(), Pauses{});
}

TEST_F(VmNodeRetry, IsMadeUntilTenPassesHaveFailed)
{
    add("a", block_at("1"));
    const ListedAs listed{{"a", "gone"}};
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, repeated(kNoVmNode, 10));
    EXPECT_EQ(handles(), Names(10, "a"));
    EXPECT_EQ(take_pauses(), Pauses(10, 1000us));
}

TEST_F(VmNodeRetry, IsMadeSilentlyForADirectoryThatDoesNotOpen)
{
    fs::remove(allocations());
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, "");
    EXPECT_TRUE(list_.empty());
    EXPECT_EQ(take_pauses(), Pauses(10, 1000us));
}

TEST_F(VmNodeRetry, IsMadeForAListingThatBreaksOff)
{
    add("a", block_at("1"));
    const ListedAs listed{{"a", "b"}};
    {
        const BrokenListing broken{1};
        read();
    }
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(handles(), (Names{"a"}));
    EXPECT_EQ(take_pauses(), Pauses(10, 1000us));
}

TEST_F(VmNodeRetry, ThatSucceedsHoldsWhatTheFailedPassesRead)
{
    add("a", block_at("1"));
    const ListedAs listed{{"a", "b"}};
    const DuringPause second{2, [&] { add("b", block_at("2")); }};
    read();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(handles(), (Names{"a", "a", "a", "b"}));
    EXPECT_EQ(output_, repeated(kNoVmNode, 2));
    EXPECT_EQ(take_pauses(), Pauses(2, 1000us));
}

TEST_F(VmNodeRetry, ThatSucceedsStandsBehindWhatWasInTheList)
{
    add("a", block_at("1"));
    list_ = {{"p", "n", "h", "v", "s"}};
    const ListedAs listed{{"a", "b"}};
    const DuringPause first{1, [&] { add("b", block_at("2")); }};
    read();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(handles(), (Names{"h", "a", "a", "b"}));
}

TEST_F(VmNodeRetry, MaySucceedAtTheTenthPass)
{
    const ListedAs listed{{"b"}};
    const DuringPause ninth{9, [&] { add("b", block_at("2")); }};
    read();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(handles(), (Names{"b"}));
    EXPECT_EQ(take_pauses(), Pauses(9, 1000us));
}

TEST_F(VmNodeRetry, IsNotMadeBehindTheTenthPass)
{
    const ListedAs listed{{"b"}};
    const DuringPause tenth{10, [&] { add("b", block_at("2")); }};
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_TRUE(list_.empty());
    EXPECT_EQ(take_pauses(), Pauses(10, 1000us));
}

TEST_F(VmNodeRetry, LeavesNoDescriptorOpen)
{
    const auto before = open_descriptors();
    add_without_node("a");
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(open_descriptors(), before);
}

}  // namespace
}  // namespace nimba::test
