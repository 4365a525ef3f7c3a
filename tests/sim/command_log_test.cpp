// SPDX-License-Identifier: MIT
// The log of what drivers were told, and the node that shows it.
#include "driver/command_log.hpp"

#include "driver/command_control.hpp"
#include "map_source.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

namespace nimba::sim::test {
namespace {

using Names = std::vector<std::string>;

TEST(CommandLog, HasALineForEachCommandInOrder)
{
    CommandLog log;
    EXPECT_EQ(log.text(), "");
    log.add("info/0/dvfs_level", 0, "balance\n");
    log.add("info/1/power_mode", EINVAL, "");
    log.add("dri/0/jw/info", EACCES, "a \"b\"\\");
    EXPECT_EQ(log.text(),
              "info/0/dvfs_level ok \"balance\\n\"\n"
              "info/1/power_mode EINVAL \"\"\n"
              "dri/0/jw/info EACCES \"a \\\"b\\\"\\\\\"\n");
    log.clear();
    EXPECT_EQ(log.text(), "");
}

TEST(CommandLog, ShowsAnyBytes)
{
    CommandLog log;
    log.add("n", 0, std::string_view{"\0\x01\xFF\xC3\xA4", 5});
    EXPECT_EQ(log.text(), "n ok \"\\u0000\\u0001\xEF\xBF\xBD\xC3\xA4\"\n");
}

TEST(CommandLog, KeepsTheLastHundredThousand)
{
    CommandLog log;
    for (int number = 0; number < 100'002; ++number) {
        log.add("n", 0, std::to_string(number));
    }
    const std::string text = log.text();
    EXPECT_EQ(std::ranges::count(text, '\n'), 100'000);
    EXPECT_TRUE(text.starts_with("n ok \"2\"\nn ok \"3\"\n"));
    EXPECT_TRUE(text.ends_with("\nn ok \"100001\"\n"));
}

TEST(CommandLog, ForgetsTheOldestWhenLongCommandsTakeMuchMemory)
{
    CommandLog log;
    const std::string long_command(std::size_t{1} << 20U, 'x');
    for (const char* node : {"first", "second"}) {
        log.add(node, 0, "");
    }
    for (int number = 0; number < 63; ++number) {
        log.add("long", 0, long_command);
    }
    EXPECT_TRUE(log.text().starts_with("first ok \"\"\nsecond ok \"\"\nlong "));
    log.add("long", 0, long_command);
    EXPECT_TRUE(log.text().starts_with("long "));
    EXPECT_EQ(std::ranges::count(log.text(), '\n'), 63);
}

class CommandControlTest : public ::testing::Test {
  protected:
    CommandControlTest() { source_.set("info/0/dvfs_level", "balance\n"); }

    MapSource source_;
    FaultPlan faults_;
    CommandControl control_{source_, faults_};
};

TEST_F(CommandControlTest, KeepsWhatTheDriverAcceptsAndWhatItRejects)
{
    EXPECT_EQ(control_.write("info/0/dvfs_level", "lowpower\n"), 0);
    EXPECT_EQ(control_.write("info/0/dvfs_level", "bad"), EINVAL);
    EXPECT_EQ(control_.read(".nimba-sim-commands"),
              "info/0/dvfs_level ok \"lowpower\\n\"\ninfo/0/dvfs_level EINVAL \"bad\"\n");
    EXPECT_EQ(source_.commands(), (Names{"info/0/dvfs_level<lowpower\n", "info/0/dvfs_level<bad"}));
}

TEST_F(CommandControlTest, CommandThatAFaultBefallsIsKeptAndNotCarriedOut)
{
    Fault fault;
    fault.kind = FaultKind::kWrite;
    fault.directory = NodeDirectory::kInfo;
    fault.path = "*";
    fault.error = EBUSY;
    fault.times = FaultTimes::kFirst;
    fault.count = 1;
    faults_.add(fault);
    EXPECT_EQ(control_.write("info/0/dvfs_level", "lowpower\n"), EBUSY);
    EXPECT_EQ(source_.commands(), Names{});
    EXPECT_EQ(control_.write("info/0/dvfs_level", "lowpower\n"), 0);
    EXPECT_EQ(control_.read(".nimba-sim-commands"),
              "info/0/dvfs_level EBUSY \"lowpower\\n\"\ninfo/0/dvfs_level ok \"lowpower\\n\"\n");
}

TEST_F(CommandControlTest, NodeEmptiesTheLogAndIsInNoListing)
{
    control_.write("info/0/dvfs_level", "lowpower\n");
    EXPECT_EQ(control_.look_up(".nimba-sim-commands"), (NodeAttributes{false, 0600}));
    EXPECT_EQ(control_.list(""), Names{"info"});
    EXPECT_EQ(control_.write(".nimba-sim-commands", "clear"), EINVAL);
    EXPECT_EQ(control_.read(".nimba-sim-commands"), "info/0/dvfs_level ok \"lowpower\\n\"\n");
    EXPECT_EQ(control_.write(".nimba-sim-commands", "clear\n"), 0);
    EXPECT_EQ(control_.read(".nimba-sim-commands"), "");
}

TEST_F(CommandControlTest, AllElseIsTheDrivers)
{
    EXPECT_EQ(control_.look_up("info/0/dvfs_level"), (NodeAttributes{false, 0644}));
    EXPECT_EQ(control_.read("info/0/dvfs_level"), "balance\n");
    EXPECT_EQ(control_.list("info/0"), Names{"dvfs_level"});
}

}  // namespace
}  // namespace nimba::sim::test
