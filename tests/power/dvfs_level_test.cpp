// SPDX-License-Identifier: MIT
#include "dvfs_fixture.hpp"

namespace nimba::test {
namespace {

class DvfsLevel : public DvfsTest {
  protected:
    // What level 42 becomes when the node holds this text.
    std::uint32_t level_of(std::string_view text) const
    {
        node("dvfs_level", text);
        return read_over(42);
    }
    std::uint32_t read_over(std::uint32_t level) const
    {
        DvfsRegisterState state{};
        state.dvfs_level = level;
        return read(state).dvfs_level;
    }
    // What is written for this level.
    Texts written_for(std::uint32_t level) const
    {
        DvfsRegisterState state{};
        state.dvfs_level = level;
        return write(state);
    }
};

TEST_F(DvfsLevel, IsReadAsAWordBehindTheKey)
{
    EXPECT_EQ(level_of("dvfs_level:balance\n"), 0U);
    EXPECT_EQ(level_of("dvfs_level:lowpower\n"), 1U);
    EXPECT_EQ(level_of("dvfs_level:performance\n"), 2U);
    EXPECT_EQ(level_of("dvfs_level:balance"), 0U);
    EXPECT_EQ(level_of("the dvfs_level:balance\n"), 0U);
    EXPECT_EQ(level_of("the dvfs_level:lowpower, now\n"), 1U);
    EXPECT_EQ(level_of("dvfs_level:performances\n"), 2U);
}

TEST_F(DvfsLevel, StaysWhenNoKnownWordIsFound)
{
    EXPECT_EQ(read_over(42), 42U);
    EXPECT_EQ(level_of(""), 42U);
    EXPECT_EQ(level_of("dvfs_level:\n"), 42U);
    EXPECT_EQ(level_of("dvfs_level:turbo\n"), 42U);
    EXPECT_EQ(level_of("dvfs_level:Balance\n"), 42U);
    EXPECT_EQ(level_of("dvfs_level: balance\n"), 42U);
    EXPECT_EQ(level_of("dvfs_level:low\n"), 42U);
    EXPECT_EQ(level_of("dvfs_level:perform\n"), 42U);
    EXPECT_EQ(level_of("balance\n"), 42U);
    EXPECT_EQ(level_of("lowpower performance\n"), 42U);
    EXPECT_EQ(level_of("dvfs_level:1\n"), 42U);
    EXPECT_EQ(level_of("1\n"), 42U);
    EXPECT_EQ(level_of({"dvfs_level:\0lowpower\n", 21}), 42U);
}

TEST_F(DvfsLevel, StaysWhenTheKeyOrTheWordLacksACharacter)
{
    for (const std::string text :
         {"dvfs_level:balance", "dvfs_level:lowpower", "dvfs_level:performance"}) {
        for (std::size_t missing = 0; missing < text.size(); ++missing) {
            EXPECT_EQ(level_of(std::string{text}.erase(missing, 1)), 42U) << text << missing;
        }
    }
}

TEST_F(DvfsLevel, IsBalanceBeforeLowPowerAndThatBeforePerformanceWhereverTheyStand)
{
    EXPECT_EQ(level_of("dvfs_level:lowpower\ndvfs_level:balance\n"), 0U);
    EXPECT_EQ(level_of("dvfs_level:performance\ndvfs_level:balance\n"), 0U);
    EXPECT_EQ(level_of("dvfs_level:performance\ndvfs_level:lowpower\n"), 1U);
    EXPECT_EQ(level_of("dvfs_level:lowpower\ndvfs_level:performance\n"), 1U);
}

TEST_F(DvfsLevel, IsFoundBehindNuls)
{
    EXPECT_EQ(level_of({"\0dvfs_level:lowpower", 20}), 1U);
}

TEST_F(DvfsLevel, IsReadFromTheFirst512BytesAndNoWordEndsAtTheLast)
{
    EXPECT_EQ(level_of(std::string(493, '.') + "dvfs_level:balance"), 0U);
    EXPECT_EQ(level_of(std::string(492, '.') + "dvfs_level:lowpower\n"), 1U);
    EXPECT_EQ(level_of(std::string(489, '.') + "dvfs_level:performance"), 2U);
    EXPECT_EQ(level_of(std::string(494, '.') + "dvfs_level:balance\n"), 42U);
    EXPECT_EQ(level_of(std::string(493, '.') + "dvfs_level:lowpower\n"), 42U);
    EXPECT_EQ(level_of(std::string(490, '.') + "dvfs_level:performance\n"), 42U);
    EXPECT_EQ(level_of(std::string(512, '.') + "dvfs_level:lowpower\n"), 42U);
}

TEST_F(DvfsLevel, IsWrittenAsAWordAndAnyUnknownOneAsBalance)
{
    node("dvfs_level", "");
    EXPECT_EQ(written_for(1), Texts{"dvfs_level <- lowpower\n"});
    EXPECT_EQ(written_for(2), Texts{"dvfs_level <- performance\n"});
    EXPECT_EQ(written_for(3), Texts{"dvfs_level <- balance\n"});
    EXPECT_EQ(written_for(0x101), Texts{"dvfs_level <- balance\n"});
    EXPECT_EQ(written_for(0x80000000), Texts{"dvfs_level <- balance\n"});
    EXPECT_EQ(written_for(0xffffffff), Texts{"dvfs_level <- balance\n"});
}

TEST_F(DvfsLevel, OfBalanceIsWrittenWhenAnotherWasRead)
{
    node("dvfs_level", "dvfs_level:lowpower\n");
    EXPECT_EQ(written_for(0), Texts{});
    EXPECT_EQ(read().dvfs_level, 1U);
    EXPECT_EQ(written_for(0), Texts{"dvfs_level <- balance\n"});
    EXPECT_EQ(written_for(1), Texts{});
    EXPECT_EQ(written_for(2), Texts{"dvfs_level <- performance\n"});
}

TEST_F(DvfsLevel, ThatStayedWhenItWasReadIsComparedWith)
{
    node("dvfs_level", "dvfs_level:turbo\n");
    EXPECT_EQ(read_over(7), 7U);
    EXPECT_EQ(written_for(7), Texts{});
    EXPECT_EQ(written_for(8), Texts{"dvfs_level <- balance\n"});
    EXPECT_EQ(written_for(0), Texts{"dvfs_level <- balance\n"});
}

}  // namespace
}  // namespace nimba::test
