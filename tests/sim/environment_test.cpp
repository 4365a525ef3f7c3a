// SPDX-License-Identifier: MIT
#include "environment.hpp"

#include "support/temp_directory.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>

namespace nimba::sim::test {
namespace {

constexpr std::array<const char*, 4> kVariables{"PATHS=/x", "PATH=/usr/bin", "EMPTY=", nullptr};

std::vector<std::string> texts(Environment& environment)
{
    std::vector<std::string> texts;
    for (const char* variable : environment.variables()) {
        texts.emplace_back(variable == nullptr ? "(end)" : variable);
    }
    return texts;
}

TEST(Environment, StartsWithTheVariablesGiven)
{
    Environment environment{kVariables.data()};
    EXPECT_EQ(texts(environment),
              (std::vector<std::string>{"PATHS=/x", "PATH=/usr/bin", "EMPTY=", "(end)"}));
    EXPECT_EQ(environment.get("PATH"), "/usr/bin");
    EXPECT_EQ(environment.get("EMPTY"), "");
    EXPECT_EQ(environment.get("PAT"), "");
}

TEST(Environment, SetReplacesOrAdds)
{
    Environment environment{kVariables.data()};
    environment.set("PATH", "/bin");
    environment.set("NEW", "1");
    EXPECT_EQ(texts(environment),
              (std::vector<std::string>{"PATHS=/x", "PATH=/bin", "EMPTY=", "NEW=1", "(end)"}));
}

TEST(Environment, ListsGrowAtEitherEndAndAnEmptyOneGetsNoSeparator)
{
    Environment environment{kVariables.data()};
    environment.prepend("PATH", "/first", ':');
    environment.append("PATH", "/last", ':');
    environment.prepend("EMPTY", "only", ':');
    environment.append("ABSENT", "alone", ':');
    EXPECT_EQ(environment.get("PATH"), "/first:/usr/bin:/last");
    EXPECT_EQ(environment.get("EMPTY"), "only");
    EXPECT_EQ(environment.get("ABSENT"), "alone");
}

TEST(Environment, TellsAnEmptyVariableFromNone)
{
    Environment environment{kVariables.data()};
    EXPECT_TRUE(environment.has("EMPTY"));
    EXPECT_FALSE(environment.has("ABSENT"));
}

class FindProgram : public ::testing::Test {
  protected:
    FindProgram()
    {
        for (const char* name : {"one", "two"}) {
            std::filesystem::create_directory(directory_.path() / name);
        }
        directory_.write("one/data", "");
        directory_.write("one/both", "");
        directory_.write("two/both", "");
        directory_.write("two/tool", "");
        chmod((directory_.path() / "two/both").c_str(), 0755);
        chmod((directory_.path() / "two/tool").c_str(), 0755);
        one_ = directory_.path() / "one";
        two_ = directory_.path() / "two";
    }

    nimba::test::TempDirectory directory_;
    std::string one_;
    std::string two_;
};

TEST_F(FindProgram, TakesTheFirstExecutable)
{
    EXPECT_EQ(find_program("tool", one_ + ":" + two_), two_ + "/tool");
    EXPECT_EQ(find_program("both", one_ + ":" + two_), two_ + "/both");
}

TEST_F(FindProgram, TakesAFileThatIsNotExecutableWhenThereIsNoOther)
{
    EXPECT_EQ(find_program("data", one_ + ":" + two_), one_ + "/data");
}

TEST_F(FindProgram, FindsNothing)
{
    EXPECT_EQ(find_program("absent", one_ + ":" + two_), "");
    EXPECT_EQ(find_program("tool", ""), "");
}

TEST_F(FindProgram, FindsTheShellOnTheDefaultPath)
{
    EXPECT_TRUE(find_program("sh", default_path()).ends_with("/bin/sh"));
}

TEST_F(FindProgram, LeavesAPathAlone)
{
    EXPECT_EQ(find_program("./absent", two_), "./absent");
}

}  // namespace
}  // namespace nimba::sim::test
