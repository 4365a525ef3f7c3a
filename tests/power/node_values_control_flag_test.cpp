// SPDX-License-Identifier: MIT
#include "adapter_nodes.hpp"
#include "node_journal.hpp"
#include "support/captured_stdout.hpp"

#include <climits>
#include <cstdint>
#include <filesystem>
#include <string>

namespace nimba::test {
namespace {

class ControlFlag : public AdapterNodesTest {
  protected:
    // What is written to a node with this text.
    Texts change(std::string_view text, std::int32_t set, std::int32_t clear)
    {
        info("misc_ctl_flag", text);
        NodeJournal journal{adapter_.handles().jw_info_dir_fd};
        gpuinfo_set_misc_ctl_flag(set, clear);
        return journal.written();
    }
};

TEST_F(ControlFlag, HasBitsSetAndCleared)
{
    EXPECT_EQ(change("3\n", 4, 1), Texts{"misc_ctl_flag <- 6\n"});
    EXPECT_EQ(change("3\n", 4, 0), Texts{"misc_ctl_flag <- 7\n"});
    EXPECT_EQ(change("3\n", 0, 1), Texts{"misc_ctl_flag <- 2\n"});
    EXPECT_EQ(change("3\n", 1, 0), Texts{"misc_ctl_flag <- 3\n"});
    EXPECT_EQ(change("3\n", 0, 4), Texts{"misc_ctl_flag <- 3\n"});
    EXPECT_EQ(change("16\n", 1000000, 16), Texts{"misc_ctl_flag <- 1000000\n"});
}

TEST_F(ControlFlag, IsWrittenAlsoWhenNothingChanges)
{
    EXPECT_EQ(change("5\n", 0, 0), Texts{"misc_ctl_flag <- 5\n"});
    EXPECT_EQ(change("0\n", 0, 0), Texts{"misc_ctl_flag <- 0\n"});
}

TEST_F(ControlFlag, HasABitSetThatIsToBeSetAndCleared)
{
    EXPECT_EQ(change("0\n", 1, 1), Texts{"misc_ctl_flag <- 1\n"});
    EXPECT_EQ(change("3\n", 6, 7), Texts{"misc_ctl_flag <- 6\n"});
    EXPECT_EQ(change("8\n", -1, -1), Texts{"misc_ctl_flag <- -1\n"});
}

TEST_F(ControlFlag, IsASignedNumber)
{
    EXPECT_EQ(change("-1\n", 0, 1), Texts{"misc_ctl_flag <- -2\n"});
    EXPECT_EQ(change("0\n", INT_MIN, 0), Texts{"misc_ctl_flag <- -2147483648\n"});
    EXPECT_EQ(change("-2147483648\n", 5, INT_MIN), Texts{"misc_ctl_flag <- 5\n"});
    EXPECT_EQ(change("12\n", 0, -1), Texts{"misc_ctl_flag <- 0\n"});
    EXPECT_EQ(change("-8\n", 3, 0), Texts{"misc_ctl_flag <- -5\n"});
}

TEST_F(ControlFlag, CountsAsZeroWithoutANumber)
{
    EXPECT_EQ(change("", 4, 1), Texts{"misc_ctl_flag <- 4\n"});
    EXPECT_EQ(change("\n", 4, 1), Texts{"misc_ctl_flag <- 4\n"});
    EXPECT_EQ(change("none\n", 4, 1), Texts{"misc_ctl_flag <- 4\n"});
    EXPECT_EQ(change("\xff\xff", 4, 1), Texts{"misc_ctl_flag <- 4\n"});
    EXPECT_EQ(change({"\0003", 2}, 4, 1), Texts{"misc_ctl_flag <- 4\n"});
}

TEST_F(ControlFlag, IsTheDecimalNumberThatBeginsTheFirst64Bytes)
{
    EXPECT_EQ(change("12 flags\n", 1, 0), Texts{"misc_ctl_flag <- 13\n"});
    EXPECT_EQ(change("0x12\n", 1, 0), Texts{"misc_ctl_flag <- 1\n"});
    EXPECT_EQ(change(std::string(62, ' ') + "84", 0, 0), Texts{"misc_ctl_flag <- 84\n"});
    EXPECT_EQ(change(std::string(63, ' ') + "84\n", 0, 0), Texts{"misc_ctl_flag <- 8\n"});
    EXPECT_EQ(change(std::string(64, ' ') + "84\n", 0, 0), Texts{"misc_ctl_flag <- 0\n"});
}

TEST_F(ControlFlag, IsReadThenWrittenOnceThenReadAgain)
{
    info("misc_ctl_flag", "3\n");
    NodeJournal journal{adapter_.handles().jw_info_dir_fd};
    gpuinfo_set_misc_ctl_flag(4, 1);
    EXPECT_EQ(journal.opened(), (Texts{"r misc_ctl_flag", "w misc_ctl_flag", "r misc_ctl_flag"}));
}

TEST_F(ControlFlag, IsReadAnewForEachChange)
{
    info("misc_ctl_flag", "1");
    gpuinfo_set_misc_ctl_flag(2, 0);
    EXPECT_EQ(adapter_.info().read("misc_ctl_flag"), "3\n");
    gpuinfo_set_misc_ctl_flag(8, 2);
    EXPECT_EQ(adapter_.info().read("misc_ctl_flag"), "9\n");
}

TEST_F(ControlFlag, IsWrittenOverTheNodesTextWithoutTruncation)
{
    info("misc_ctl_flag", "3 flags\n");
    gpuinfo_set_misc_ctl_flag(4, 1);
    EXPECT_EQ(adapter_.info().read("misc_ctl_flag"), "6\nflags\n");
}

TEST_F(ControlFlag, IsNotCreated)
{
    gpuinfo_set_misc_ctl_flag(4, 1);
    EXPECT_TRUE(std::filesystem::is_empty(adapter_.info().path()));
    EXPECT_TRUE(std::filesystem::is_empty(adapter_.hwmon().path()));
}

TEST_F(ControlFlag, IsNotLookedForInTheHwmonDirectory)
{
    hwmon("misc_ctl_flag", "3\n");
    gpuinfo_set_misc_ctl_flag(4, 1);
    EXPECT_EQ(adapter_.hwmon().read("misc_ctl_flag"), "3\n");
}

TEST_F(ControlFlag, StaysBeforeAnAdapterIsCurrentAndWithoutADirectory)
{
    info("misc_ctl_flag", "3\n");
    pCurrent_gpu_infos = nullptr;
    gpuinfo_set_misc_ctl_flag(4, 1);
    pCurrent_gpu_infos = &adapter_.handles();
    adapter_.handles().jw_info_dir_fd = -1;
    gpuinfo_set_misc_ctl_flag(4, 1);
    EXPECT_EQ(adapter_.info().read("misc_ctl_flag"), "3\n");
}

TEST_F(ControlFlag, LeavesNoDescriptorOpenAndIsSilent)
{
    const auto descriptors = open_descriptors();
    const std::string output = stdout_of([this] {
        gpuinfo_set_misc_ctl_flag(4, 1);
        info("misc_ctl_flag", "3\n");
        gpuinfo_set_misc_ctl_flag(4, 1);
        std::filesystem::remove(adapter_.info().path() / "misc_ctl_flag");
        std::filesystem::create_symlink("/dev/full", adapter_.info().path() / "misc_ctl_flag");
        gpuinfo_set_misc_ctl_flag(4, 1);
    });
    EXPECT_EQ(open_descriptors(), descriptors);
    EXPECT_EQ(output, "");
    EXPECT_EQ(take_messages(), Texts{});
}

}  // namespace
}  // namespace nimba::test
