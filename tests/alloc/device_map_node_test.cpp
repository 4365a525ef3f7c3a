// SPDX-License-Identifier: MIT
// The node of a device context: its lines, keys and values.
#include "child_process.hpp"
#include "device_tree.hpp"
#include "directory_listing.hpp"
#include "support/descriptor.hpp"

#include <climits>
#include <csignal>
#include <stdexcept>
#include <utility>

namespace nimba::test {
namespace {

using DeviceNode = DeviceMapTest;

TEST_F(DeviceNode, HoldsPidAndHandleInAnyOrderAmongOtherKeys)
{
    EXPECT_EQ(context_of("pid = 5000001\nhandle = 1f\n"), (Context{5000001, 0x1f, ""}));
    EXPECT_EQ(context_of("handle = 1f\npid = 5000001\n"), (Context{5000001, 0x1f, ""}));
    EXPECT_EQ(context_of("name = card\nhandle = 1f\n\nflags = 0x3\npid = 5000001\nuid = 1000\n"),
              (Context{5000001, 0x1f, ""}));
}

TEST_F(DeviceNode, WithoutAKeyLeavesItsFieldZero)
{
    EXPECT_EQ(context_of(""), (Context{0, 0, ""}));
    EXPECT_EQ(context_of("\n"), (Context{0, 0, ""}));
    EXPECT_EQ(context_of("pid = 5000001\n"), (Context{5000001, 0, ""}));
    EXPECT_EQ(context_of("handle = 1f\n"), (Context{0, 0x1f, ""}));
}

TEST_F(DeviceNode, MatchesKeysAsAWhole)
{
    EXPECT_EQ(context_of("pids = 1\npi = 2\nppid = 3\n pid = 4\nPID = 5\npid  = 6\n"
                         "handles = 1\nhandl = 2\nshandle = 3\n handle = 4\nHandle = 5\n"),
              (Context{0, 0, ""}));
}

TEST_F(DeviceNode, WrittenWithoutBlanksLosesTheEndOfItsKey)
{
    EXPECT_EQ(context_of("pid=5\nhandle=5\n"), (Context{0, 0, ""}));
    EXPECT_EQ(context_of("pid= 5\nhandle= 5\n"), (Context{0, 0, ""}));
}

TEST_F(DeviceNode, HasAnyCharacterWhereTheBlanksBelong)
{
    EXPECT_EQ(context_of("pid\t=\t5000001\nhandle:=:1f\n"), (Context{5000001, 0x1f, ""}));
    EXPECT_EQ(context_of("pidx=y5000001\nhandlex=y1f\n"), (Context{5000001, 0x1f, ""}));
    EXPECT_EQ(context_of("pid ==5000001\nhandle ==1f\n"), (Context{5000001, 0x1f, ""}));
}

TEST_F(DeviceNode, LosesTheFirstCharacterOfAValueWithoutABlank)
{
    EXPECT_EQ(context_of("pid =75000001\nhandle =71f\n"), (Context{5000001, 0x1f, ""}));
    EXPECT_EQ(context_of("pid =7\nhandle = 1f\n"), (Context{0, 0x1f, ""}));
}

TEST_F(DeviceNode, SplitsALineAtItsFirstEqualsSign)
{
    EXPECT_EQ(context_of("pid = 5000001=5000002\nhandle = 1f=2f\n"), (Context{5000001, 0x1f, ""}));
    EXPECT_EQ(context_of("name = pid = 5\nx = handle = 6\n"), (Context{0, 0, ""}));
}

TEST_F(DeviceNode, IgnoresLinesWithoutAnEqualsSign)
{
    EXPECT_EQ(context_of("pid 5\nhandle\n\nhandle : 6\nhandle = 1f\npid"), (Context{0, 0x1f, ""}));
    EXPECT_EQ(context_of(std::string(1'000'000, 'x') + "\nhandle = 1f\n"), (Context{0, 0x1f, ""}));
}

TEST_F(DeviceNode, IsReadToItsEndWhereverItsLinesLie)
{
    std::string filler;
    while (filler.size() < 20'000) {
        filler += "flags = 0x3, and no word of a process\n";
    }
    for (std::size_t before = 8'100; before < 8'200; ++before) {
        SCOPED_TRACE(before);
        EXPECT_EQ(context_of(filler.substr(0, before) + "\npid = 5000001\nhandle = 1f\n" + filler),
                  (Context{5000001, 0x1f, ""}));
    }
    EXPECT_EQ(context_of(filler + "handle = 1f\n" + filler + "pid = 5000001\n"),
              (Context{5000001, 0x1f, ""}));
}

TEST_F(DeviceNode, IgnoresLinesThatBeginWithAnEqualsSign)
{
    EXPECT_EQ(context_of("=\n= \n= 5\n=5\n==\nhandle = 1f\n= pid = 6\n="), (Context{0, 0x1f, ""}));
}

TEST_F(DeviceNode, MayHaveAnEmptyPid)
{
    for (const char* text : {"pid =\n", "pid = \n", "pid =", "pid = ", "pid =\r\n", "pid = 7"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(context_of(text), (Context{0, 0, ""}));
    }
}

TEST_F(DeviceNode, LosesTheLastCharacterOfAValueAtItsEndWithoutANewline)
{
    EXPECT_EQ(context_of("pid = 50000019"), (Context{5000001, 0, ""}));
    EXPECT_EQ(context_of("pid = 5000001\nhandle = 1f2"), (Context{5000001, 0x1f, ""}));
}

TEST_F(DeviceNode, MayHoldNulCharacters)
{
    using std::string_literals::operator""s;
    EXPECT_EQ(context_of("pid\0 = 5\npi\0d = 6\n\0\nhandle = 1f\0002\n"s), (Context{0, 0x1f, ""}));
}

TEST_F(DeviceNode, MayHaveCarriageReturns)
{
    EXPECT_EQ(context_of("pid = 5000001\r\nhandle = 1f\r\n"), (Context{5000001, 0x1f, ""}));
}

TEST_F(DeviceNode, KeepsTheLastOfEqualKeys)
{
    EXPECT_EQ(context_of("pid = 5000001\nhandle = 1\nhandle = 2\npid = 5000002\n"),
              (Context{5000002, 2, ""}));
}

TEST_F(DeviceNode, NamesTheProcessOfTheLastPid)
{
    const NamedProcess first{{"/usr/bin/a-rather-long-name"}};
    const NamedProcess second{{"/bin/b"}};
    const EndedProcess ended;
    const auto line = [](int pid) { return "pid = " + std::to_string(pid) + "\n"; };
    EXPECT_EQ(context_of(line(first.pid()) + line(second.pid())),
              (Context{second.pid(), 0, "/bin/b"}));
    EXPECT_EQ(context_of(line(first.pid()) + "pid = 5000001\n"), (Context{5000001, 0, ""}));
    EXPECT_EQ(context_of(line(second.pid()) + line(ended.pid())),
              (Context{ended.pid(), 0, "/bin/b"}));
}

TEST_F(DeviceNode, HasNamesOf63CharactersAtMost)
{
    const NamedProcess whole{{"/" + std::string(62, 'w')}};
    const NamedProcess component{{"/" + std::string(63, 'c')}};
    const NamedProcess longer{{std::string(400, 'l')}};
    const NamedProcess deep{{"/" + std::string(54, 'd') + "/bin/long-name"}};
    const auto name_of = [&](const NamedProcess& process) {
        return context_of("pid = " + std::to_string(process.pid()) + "\n").process_name;
    };
    EXPECT_EQ(name_of(whole), "/" + std::string(62, 'w'));
    EXPECT_EQ(name_of(component), std::string(63, 'c'));
    EXPECT_EQ(name_of(longer), std::string(63, 'l'));
    EXPECT_EQ(name_of(deep), "long-name");
}

TEST_F(DeviceNode, HasNoNameForAProcessWithoutACommandLine)
{
    const EndedProcess ended;
    context_of("handle = 1\npid = " + std::to_string(ended.pid()) + "\n");
    gfx_device_pid expected{};
    expected.pid = ended.pid();
    expected.handle = 1;
    EXPECT_EQ(std::memcmp(map_.entries, &expected, sizeof expected), 0);
}

TEST_F(DeviceNode, ReadsPidsAsStrtolDoes)
{
    const std::vector<std::pair<std::string, std::int32_t>> values{
        {"  5000001", 5000001},
        {"\t5000001", 5000001},
        {"+5000001", 5000001},
        {"-1", -1},
        {"5000001abc", 5000001},
        {"5000001 2", 5000001},
        {"0x10", 0},
        {"010", 10},
        {"abc", 0},
        {"- 5", 0},
        {"2147483647", INT_MAX},
        {"2147483648", INT_MIN},
        {"4294967295", -1},
        {"4299967297", 5000001},
        {"-4294967297", -1},
        {"9223372036854775807", -1},
        {"99999999999999999999", -1},
        {"-99999999999999999999", 0},
    };
    for (const auto& [text, pid] : values) {
        SCOPED_TRACE(text);
        context_of("pid = " + text + "\n");
        EXPECT_EQ(map_.entries[0].pid, pid);
    }
}

TEST_F(DeviceNode, ReadsHandlesInBase16)
{
    const std::vector<std::pair<std::string, std::int32_t>> values{
        {"10", 16},
        {"0x10", 16},
        {"0X1F", 31},
        {"  ff", 255},
        {"+ff", 255},
        {"-1", -1},
        {"ffff", 65535},
        {"00000000000000000012", 18},
        {"7fffffff", INT_MAX},
        {"-80000000", INT_MIN},
        {"12xyz", 18},
        {"0x", 0},
        {"0", 0},
    };
    for (const auto& [text, handle] : values) {
        SCOPED_TRACE(text);
        EXPECT_EQ(context_of("handle = " + text + "\n"), (Context{0, handle, ""}));
    }
}

class BadHandle : public DeviceMapTest {
  protected:
    // The text of the error of this type that leaves the listing of contexts, which must leave no
    // descriptor open.
    template <class Error>
    std::string error(const std::string& node)
    {
        add("only", node);
        const auto before = open_descriptors();
        std::string text = "no error";
        try {
            get_device_pid_maps_internal(&map_, 0, 1);
        } catch (const Error& caught) {
            text = caught.what();
        }
        EXPECT_EQ(open_descriptors(), before);
        return text;
    }
};

TEST_F(BadHandle, WithoutDigitsRaisesInvalidArgument)
{
    for (const char* node : {"handle = xyz\n", "handle = \n", "handle =\n", "handle =", "handle = ",
                             "handle = -\n", "handle = g1\n", "handle = 7", "handle =5\n"}) {
        SCOPED_TRACE(node);
        EXPECT_EQ(error<std::invalid_argument>(node), "stoi");
    }
}

TEST_F(BadHandle, OutsideTheSigned32BitRangeRaisesOutOfRange)
{
    for (const char* node : {"handle = 80000000\n", "handle = ffffffff\n", "handle = -80000001\n",
                             "handle = 0x123456789abcdef01234\n"}) {
        SCOPED_TRACE(node);
        EXPECT_EQ(error<std::out_of_range>(node), "stoi");
    }
}

TEST_F(BadHandle, LeavesThroughTheCurrentAdaptersListing)
{
    add("only", "handle = xyz\n");
    add("only", "only", "handle = xyz\n");
    EXPECT_THROW(get_device_pid_maps(&map_), std::invalid_argument);
}

TEST_F(BadHandle, KeepsTheEntriesBeforeItAndLeavesItsOwnZero)
{
    const NamedProcess process{{"/bin/app"}};
    const std::string pid = "pid = " + std::to_string(process.pid()) + "\n";
    add("good", "pid = 5000001\nhandle = 1f\n");
    const ListedAs order{{"good", "only", "good"}};
    EXPECT_EQ(error<std::out_of_range>(pid + "handle = 80000000\n"), "stoi");
    EXPECT_EQ(entries(1), (Contexts{{5000001, 0x1f, ""}}));
    std::memset(&map_, 0xa5, sizeof map_);
    EXPECT_EQ(error<std::invalid_argument>(pid + "handle = 1\nhandle = xyz\n"), "stoi");
    EXPECT_EQ(entries(1), (Contexts{{5000001, 0x1f, ""}}));
}

class DeviceNodeLimit : public DeviceMapTest {
  protected:
    static std::string letters(std::size_t count) { return std::string(count, 'x'); }

    void expect_death(const std::string& text, const char* message)
    {
        add("only", text);
        EXPECT_EXIT(get_device_pid_maps_internal(&map_, 0, 1), testing::KilledBySignal(SIGABRT),
                    testing::Eq(message));
    }
    void expect_death_of_key(const std::string& text)
    {
        expect_death(text,
                     "libnimba_mgmt_interface: a key in a driver node has more than 127 "
                     "characters\n");
    }
    void expect_death_of_value(const std::string& text)
    {
        expect_death(text,
                     "libnimba_mgmt_interface: a value in a driver node has more than 127 "
                     "characters\n");
    }
};

using DeviceNodeLimitDeathTest = DeviceNodeLimit;

TEST_F(DeviceNodeLimit, IsAKeyOf127Characters)
{
    EXPECT_EQ(context_of(letters(127) + " = 1\nhandle = 1f\n"), (Context{0, 0x1f, ""}));
    EXPECT_EQ(context_of(letters(127) + "y=\nhandle = 1f\n"), (Context{0, 0x1f, ""}));
}

TEST_F(DeviceNodeLimit, IsAValueOf127CharactersWithItsNewline)
{
    EXPECT_EQ(context_of("x = " + letters(126) + "\nhandle = 1f\n"), (Context{0, 0x1f, ""}));
    EXPECT_EQ(context_of("handle = 1f\nx = " + letters(127)), (Context{0, 0x1f, ""}));
    EXPECT_EQ(context_of("pid = " + std::string(119, '0') + "5000001\n"),
              (Context{5000001, 0, ""}));
    EXPECT_EQ(context_of("handle = " + std::string(124, '0') + "1f\n"), (Context{0, 0x1f, ""}));
}

TEST_F(DeviceNodeLimitDeathTest, ALongerKeyEndsTheProcess)
{
    expect_death_of_key(letters(128) + " = 1\n");
    expect_death_of_key(letters(129) + "=");
    expect_death_of_key("handle = 1\n" + letters(1'000'000) + " = 1\n");
}

TEST_F(DeviceNodeLimitDeathTest, ALongerValueEndsTheProcess)
{
    expect_death_of_value("x = " + letters(127) + "\n");
    expect_death_of_value("x = " + letters(128));
    expect_death_of_value("pid = " + std::string(127, '0') + "\n");
    expect_death_of_value("handle = " + std::string(127, '0') + "\n");
    expect_death_of_value("x = " + letters(1'000'000) + "\n");
}

}  // namespace
}  // namespace nimba::test
