// SPDX-License-Identifier: MIT
#include "tools/smi/top/keys.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

namespace nimba::smi::top {
namespace {

bool contains(const std::vector<std::string>& lines, const std::string& line)
{
    return std::ranges::find(lines, line) != lines.end();
}

TEST(TopKeys, DoWhatUsersOfSuchViewsExpect)
{
    EXPECT_EQ(action_of(key_of('q')), Action::kQuit);
    EXPECT_EQ(action_of(Key::kF10), Action::kQuit);
    EXPECT_EQ(action_of(key_of('?')), Action::kHelp);
    EXPECT_EQ(action_of(key_of('/')), Action::kFilter);
    EXPECT_EQ(action_of(key_of(' ')), Action::kPause);
    EXPECT_EQ(action_of(Key::kTab), Action::kNextAdapter);
    EXPECT_EQ(action_of(key_of('3')), Action::kAdapter2);
    EXPECT_EQ(action_of(key_of('M')), Action::kSortMemory);
    EXPECT_EQ(action_of(key_of('Z')), std::nullopt);
}

TEST(TopKeys, HaveOneMeaningEach)
{
    std::set<Key> keys;
    for (const Binding& binding : bindings()) {
        for (const Key key : binding.keys) {
            EXPECT_TRUE(keys.insert(key).second) << key_name(key);
        }
    }
}

TEST(TopKeys, HaveNames)
{
    EXPECT_EQ(key_name(key_of('q')), "q");
    EXPECT_EQ(key_name(key_of(' ')), "Space");
    EXPECT_EQ(key_name(Key::kPageDown), "PgDn");
    EXPECT_EQ(key_name(Key{U'é'}), "é");
}

TEST(TopKeys, AreAllOnTheHelpPage)
{
    const auto lines = help_lines();
    EXPECT_EQ(lines.size(), 28U);
    EXPECT_TRUE(contains(lines, "       q, F10  Leave"));
    EXPECT_TRUE(contains(lines, "     p, Space  Take no more samples, or go on"));
    EXPECT_TRUE(contains(lines, "     Right, >  Sort by the column to the right"));
}

TEST(TopKeys, AreAllInTheManPage)
{
    const std::string text = man_text();
    EXPECT_TRUE(text.starts_with("*q*, *F10*\n\tLeave.\n\n*?*, *h*, *F1*\n\t"));
    EXPECT_NE(text.find("*/*, *\\\\*, *F3*, *F4*\n\t"), std::string::npos);
    EXPECT_NE(text.find("*\\+*, *=*\n\tTake samples less often.\n\n"), std::string::npos);
    EXPECT_TRUE(text.ends_with("*Ctrl-L*\n\tDraw the screen anew.\n\n"));
    std::ifstream file{MAN_PAGES "nimba-smi-top.1.scd"};
    const std::string page{std::istreambuf_iterator{file}, {}};
    EXPECT_NE(page.find("\n# KEYS\n\n" + text + "# ENVIRONMENT\n"), std::string::npos) << text;
}

}  // namespace
}  // namespace nimba::smi::top
