// SPDX-License-Identifier: MIT
// The process id of a device.
#include "node_pipe.hpp"
#include "process_node_fixture.hpp"
#include "support/descriptor.hpp"

#include <algorithm>
#include <iterator>

namespace nimba::test {
namespace {

using namespace std::string_literals;

TEST(PidOfALine, IsWhatStandsBehindItsKey)
{
    EXPECT_EQ(find_Pid_number("pid = 4711"), "4711");
    EXPECT_EQ(find_Pid_number("device_pid = 4711 of some app"), "4711 of some app");
}

TEST(PidOfALine, LosesBlanksAndLineEndsBehindItAlone)
{
    EXPECT_EQ(find_Pid_number("pid = 4711 \t\r\n \n"), "4711");
    EXPECT_EQ(find_Pid_number("pid =  \t4711\v\f\n"), " \t4711\v\f");
    EXPECT_EQ(find_Pid_number("pid = 4 7\t1\n"), "4 7\t1");
}

TEST(PidOfALine, IsEmptyWithoutItsKey)
{
    EXPECT_EQ(find_Pid_number(""), "");
    EXPECT_EQ(find_Pid_number("pid=4711"), "");
    EXPECT_EQ(find_Pid_number("pid =4711"), "");
    EXPECT_EQ(find_Pid_number("pid: 4711"), "");
    EXPECT_EQ(find_Pid_number("PID = 4711"), "");
}

TEST(PidOfALine, IsEmptyWhenNothingOrOnlyBlanksFollow)
{
    EXPECT_EQ(find_Pid_number("pid = "), "");
    EXPECT_EQ(find_Pid_number("pid =  \t\r\n"), "");
}

TEST(PidOfALine, BelongsToTheFirstKey)
{
    EXPECT_EQ(find_Pid_number("pid = pid = 1"), "pid = 1");
    EXPECT_EQ(find_Pid_number("tpid = 1, pid = 2"), "1, pid = 2");
}

TEST(PidOfALine, MayHoldAnyBytes)
{
    EXPECT_EQ(find_Pid_number("pid = 1\0\xff "s), "1\0\xff"s);
}

TEST_F(ProcessNode, TellsTheProcessId)
{
    EXPECT_EQ(pid_of("name = x\npid = 4711\nstate = 1\n"), "4711");
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, "");
}

TEST_F(ProcessNode, TellsItWithoutANewlineAndWithCarriageReturns)
{
    EXPECT_EQ(pid_of("pid = 4711"), "4711");
    EXPECT_EQ(pid_of("name = x\r\npid = 4712\r\n"), "4712");
}

TEST_F(ProcessNode, KeepsTheFirstLineThatHoldsItsKey)
{
    EXPECT_EQ(pid_of("pid = 1\npid = 2\n"), "1");
    EXPECT_EQ(status_, 0);
}

TEST_F(ProcessNode, IsEmptyWhenAnotherLineHoldsTheThreeLettersFirst)
{
    EXPECT_EQ(pid_of("rapid\npid = 2\n"), "");
    EXPECT_EQ(status_, 0);
}

TEST_F(ProcessNode, LeavesTheProcessIdWithoutALineOfIt)
{
    EXPECT_EQ(pid_of("name = x\n"), "before");
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(pid_of(""), "before");
    EXPECT_EQ(status_, 0);
}

TEST_F(ProcessNode, CutsTheProcessIdTo47Bytes)
{
    const std::string digits = "12345678901234567890123456789012345678901234567890";
    EXPECT_EQ(pid_of("pid = " + digits.substr(0, 46) + "\n"), digits.substr(0, 46));
    EXPECT_EQ(pid_of("pid = " + digits.substr(0, 47) + "\n"), digits.substr(0, 47));
    EXPECT_EQ(pid_of("pid = " + digits.substr(0, 48) + "\n"), digits.substr(0, 47));
    EXPECT_EQ(pid_of("pid = " + std::string(200, '7') + "\n"), std::string(47, '7'));
}

TEST_F(ProcessNode, WritesNothingBehindTheProcessId)
{
    std::fill(std::begin(device_.app_name), std::end(device_.app_name), 'n');
    pid_of("pid = " + std::string(300, '7') + "\n");
    EXPECT_EQ(std::string(std::begin(device_.app_name), std::end(device_.app_name)),
              std::string(48, 'n'));
}

TEST_F(ProcessNode, CutsALineAt511Bytes)
{
    EXPECT_EQ(pid_of(std::string(502, 'x') + "pid = 123456\n"), "123");
    EXPECT_EQ(pid_of(std::string(508, 'x') + "pid = 123456\n"), "");
    EXPECT_EQ(status_, 0);
}

TEST_F(ProcessNode, ReadsWhatFollows511BytesAsALineOfItsOwn)
{
    EXPECT_EQ(pid_of(std::string(511, 'x') + "pid = 4711\n"), "4711");
    EXPECT_EQ(pid_of(std::string(1'022, 'x') + "pid = 4712\n"), "4712");
}

TEST_F(ProcessNode, DoesNotFindLettersOnTwoSidesOfACut)
{
    EXPECT_EQ(pid_of(std::string(509, 'x') + "pid = 4711\n"), "before");
    EXPECT_EQ(pid_of(std::string(510, 'x') + "pid = 4711\n"), "before");
}

TEST_F(ProcessNode, CountsTheNewlineAmongThe511Bytes)
{
    EXPECT_EQ(pid_of(std::string(510, 'x') + "\npid = 4711\n"), "4711");
    EXPECT_EQ(pid_of(std::string(511, 'x') + "\npid = 4712\n"), "4712");
}

TEST_F(ProcessNode, EndsALineAtANulByte)
{
    EXPECT_EQ(pid_of("pid = 47\00011\n"s), "47");
    EXPECT_EQ(pid_of("name\0pid = 1\npid = 2\n"s), "2");
    EXPECT_EQ(pid_of("\0\0\npid = 3\n"s), "3");
    EXPECT_EQ(pid_of("\0pid = 1\n"s), "3");
}

TEST_F(ProcessNode, CountsNulBytesAmongThe511Bytes)
{
    EXPECT_EQ(pid_of(std::string(511, '\0') + "pid = 1\n"), "1");
    EXPECT_EQ(pid_of(std::string(510, '\0') + "pid = 2\n"), "1");
}

TEST_F(ProcessNode, ThatIsMissingIsToldAndFails)
{
    EXPECT_EQ(pid(), "before");
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, kNoPid);
}

TEST_F(ProcessNode, LeavesNoDescriptorOpen)
{
    const auto before = open_descriptors();
    pid();
    EXPECT_EQ(open_descriptors(), before);
    pid_of("pid = 1\nmore\n");
    EXPECT_EQ(open_descriptors(), before);
    pid_of("more\n");
    EXPECT_EQ(open_descriptors(), before);
}

TEST_F(ProcessNode, IsNotInheritedWhileItIsOpen)
{
    EXPECT_EQ(closing_on_exec_in(path(), "pid = 4711\n",
                                 [&] { status_ = get_Pid_info(&device_, path().c_str()); }),
              (std::vector<bool>{true}));
    EXPECT_EQ(status_, 0);
    EXPECT_STREQ(device_.pid, "4711");
}

}  // namespace
}  // namespace nimba::test
