// SPDX-License-Identifier: MIT
// Long keys, values, lines and nodes.
#include "allocation_text_fixture.hpp"

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>

namespace nimba::test {
namespace {

const std::string kMegabyte(std::size_t{1} << 20U, 'm');

std::string zeros(std::size_t count)
{
    return std::string(count, '0');
}

// `size` bytes of lines that mean nothing; 2 at least.
std::string padding(std::size_t size)
{
    std::string text;
    while (size - text.size() > 60) {
        text += "a line without a sign, of 32 B.\n";
    }
    return text + std::string(size - text.size() - 1, 'p') + "\n";
}

TEST_F(AllocationText, MayHaveAKeyOf127Characters)
{
    Record expected = blank();
    expected.size = 5;
    EXPECT_EQ(read(std::string(127, 'k') + "=1\nsize=5\n"), expected);
    EXPECT_EQ(read("size=5\n" + std::string(127, 'k') + "=\n"), expected);
    EXPECT_EQ(read("size=5\n" + std::string(127, 'k') + "=1"), expected);
}

TEST_F(AllocationText, MayHaveAValueOf126CharactersAndANewline)
{
    Record expected = blank();
    expected.handle = 0x1234;
    expected.device = 1234;
    expected.size = 12345;
    EXPECT_EQ(read("handle=" + zeros(122) + "1234\ndevice=" + zeros(122) +
                   "1234\nsize=" + zeros(121) + "12345\nname=" + std::string(126, 'v') + "\n"),
              expected);
}

TEST_F(AllocationText, MayEndInAValueOf127CharactersAndLosesTheLast)
{
    EXPECT_EQ(read("size=" + zeros(121) + "123456").size, 12345);
    EXPECT_EQ(read("size=5\nname=" + std::string(127, 'v')).size, 5);
}

TEST_F(AllocationText, MayHaveTheLongestKeyAndTheLongestValueInOneLine)
{
    Record expected = blank();
    expected.size = 5;
    EXPECT_EQ(read(std::string(127, 'k') + "=" + std::string(126, 'v') + "\nsize=5\n"), expected);
}

TEST_F(AllocationText, MayHaveLongLinesWithoutASign)
{
    Record expected = blank();
    expected.size = 5;
    expected.tile = 6;
    EXPECT_EQ(read("size=5\n" + kMegabyte + "\ntile=6\n"), expected);
    EXPECT_EQ(read(kMegabyte + "\nsize=5\n" + kMegabyte + "\n" + kMegabyte + "\ntile=6\n"),
              expected);
    EXPECT_EQ(read("size=5\ntile=6\n" + kMegabyte), expected);
    EXPECT_EQ(read("size=5\ntile=6\nsize" + kMegabyte + "\n"), expected);
}

TEST_F(AllocationText, MayHaveALineOfEveryLengthAroundAPowerOfTwo)
{
    Record expected = blank();
    expected.size = 5;
    expected.tile = 6;
    for (const std::size_t power : {128U, 256U, 1024U, 4096U, 8192U, 16384U, 65536U}) {
        for (std::size_t length = power - 8; length <= power + 2; ++length) {
            const std::string line(length, 'm');
            EXPECT_EQ(read(line + "\nsize=5\ntile=6\n"), expected) << length;
            EXPECT_EQ(read("size=5\n" + line + "\ntile=6\n"), expected) << length;
            EXPECT_EQ(read("size=5\ntile=6\n" + line), expected) << length;
        }
    }
}

TEST_F(AllocationText, MayHaveItsLinesAnywhereInALongNode)
{
    Record expected = blank();
    expected.handle = 0x1f;
    expected.size = 12345;
    expected.tile = -6;
    for (const std::size_t power : {1024U, 4096U, 8192U, 16384U, 65536U}) {
        for (std::size_t offset = power - 36; offset <= power + 1; ++offset) {
            const std::string text = padding(offset) + "size=12345\nhandle=1f\ntile=-6\n";
            EXPECT_EQ(read(text), expected) << offset;
            EXPECT_EQ(read(text + padding(power)), expected) << offset;
        }
    }
}

TEST_F(AllocationText, LosesItsLastCharacterAnywhereInALongNode)
{
    for (const std::size_t power : {4096U, 8192U, 16384U, 65536U}) {
        for (std::size_t offset = power - 12; offset <= power + 1; ++offset) {
            EXPECT_EQ(read(padding(offset) + "size=12345").size, 1234) << offset;
        }
    }
}

TEST_F(AllocationText, MayHaveManyLines)
{
    std::string text;
    for (int line = 0; line < 100000; ++line) {
        text += "size=1\nname=x\n";
    }
    EXPECT_EQ(read(text + "size=7\n").size, 7);
}

constexpr const char* kLongKey =
    "libnimba_mgmt_interface: a key in a driver node has more than 127 characters\n";
constexpr const char* kLongValue =
    "libnimba_mgmt_interface: a value in a driver node has more than 127 characters\n";

// A node that breaks a bound, and what the process's last line is.
struct Breach {
    const char* name;
    std::string text;
    const char* message;
};

void PrintTo(const Breach& breach, std::ostream* out)
{
    *out << breach.name;
}

class AllocationBoundDeathTest : public testing::TestWithParam<Breach> {
  protected:
    AllocationTree tree_;
};

TEST_P(AllocationBoundDeathTest, EndsTheProcessWithOneLine)
{
    tree_.add("1", GetParam().text);
    tree_.add("alike", "size=5\nname=6\nhandle=1\ndevice=1\n");
    const ListedAs listed{{"alike", "1"}};
    Records list;
    EXPECT_EXIT(get_current_allocation_data_try(list, 0, kVa), testing::KilledBySignal(SIGABRT),
                testing::Eq(GetParam().message));
    EXPECT_EXIT(get_current_allocation_data(list, 0, kLegacy), testing::KilledBySignal(SIGABRT),
                testing::Eq(GetParam().message));
}

INSTANTIATE_TEST_SUITE_P(
    , AllocationBoundDeathTest,
    testing::Values(
        Breach{"KeyOf128", std::string(128, 'k') + "=1\n", kLongKey},
        Breach{"KeyOf128WithoutAValue", std::string(128, 'k') + "=", kLongKey},
        Breach{"KeyOf128BehindOtherLines", "size=5\ntile=6\n" + std::string(128, 'k') + "=1\n",
               kLongKey},
        Breach{"KeyOf128NulBytes", std::string(128, '\0') + "=1\n", kLongKey},
        Breach{"ValueOf127AndANewline", "size=" + zeros(126) + "1\n", kLongValue},
        Breach{"ValueOf127AndANewlineOfAnUnknownKey", "name=" + std::string(127, 'v') + "\n",
               kLongValue},
        Breach{"ValueOf127AndANewlineWithoutAKey", "=" + std::string(127, '=') + "\n", kLongValue},
        Breach{"ValueOf127NulBytesAndANewline", "size=" + std::string(127, '\0') + "\n",
               kLongValue},
        Breach{"HandleOf127AndANewline", "handle=" + zeros(126) + "1\n", kLongValue},
        Breach{"DeviceOf127AndANewline", "device=" + zeros(126) + "1\nsize=5\n", kLongValue},
        Breach{"ValueOf128WithoutANewline", "size=" + zeros(128), kLongValue},
        Breach{"MegabyteOfAValue", "size=" + kMegabyte + "\n", kLongValue},
        Breach{"MegabyteOfAValueWithoutANewline", "size=" + kMegabyte, kLongValue},
        Breach{"MegabyteOfAValueOfAnUnknownKey", "name=" + kMegabyte + "\nsize=5\n", kLongValue},
        Breach{"MegabyteOfAKey", kMegabyte + "=1\n", kLongKey},
        Breach{"MegabyteOfAKeyBehindOtherLines", "size=5\n" + kMegabyte + "=1\nsize=5\n", kLongKey},
        Breach{"MegabyteOfAKeyWithoutAValue", kMegabyte + "=", kLongKey},
        Breach{"KeyAndValueOfMegabytes", kMegabyte + "=" + kMegabyte, kLongKey},
        Breach{"KeyOf8191", std::string(8191, 'k') + "=1\n", kLongKey},
        Breach{"KeyOf8192", std::string(8192, 'k') + "=1\n", kLongKey},
        Breach{"KeyOf8193", std::string(8193, 'k') + "=1\n", kLongKey},
        Breach{"KeyOf1024AndAMegabyte", std::string(1024, 'k') + "=" + kMegabyte, kLongKey}),
    [](const testing::TestParamInfo<Breach>& row) { return std::string{row.param.name}; });

TEST(AllocationBreachDeathTest, AlsoEndsTheQueries)
{
    const AllocationTree tree;
    tree.add("1", "size=" + zeros(127) + "\n");
    _GFX_DEVICE_ALLOCATION_SUMMARY summary{};
    EXPECT_EXIT(get_device_allocation_summary_internal(&summary, 0, kVa),
                testing::KilledBySignal(SIGABRT), testing::Eq(kLongValue));
}

}  // namespace
}  // namespace nimba::test
