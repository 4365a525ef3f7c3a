// SPDX-License-Identifier: MIT
// The memory modules of a machine file.
#include "bad_file.hpp"
#include "machine_of.hpp"
#include "support/temp_directory.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nimba::sim::test {
namespace {

TEST(MemoryModules, MachineThatSaysNothingHasTwoOfDifferentChannels)
{
    const Machine machine = machine_of("");
    ASSERT_EQ(machine.memory_modules.size(), 2U);
    const MemoryModule& first = machine.memory_modules.at(0);
    EXPECT_EQ(first.locator, "DIMM 0");
    EXPECT_EQ(first.bank_locator, "BANK 0 CHANNEL A");
    EXPECT_EQ(first.type, 0x1A);
    EXPECT_EQ(first.total_width, 64);
    EXPECT_EQ(first.data_width, 64);
    EXPECT_EQ(first.speed, 3200);
    EXPECT_EQ(first.size, 8192U);
    const MemoryModule& second = machine.memory_modules.at(1);
    EXPECT_EQ(second.locator, "DIMM 1");
    EXPECT_EQ(second.bank_locator, "BANK 0 CHANNEL B");
    EXPECT_EQ(second.type, 0x1A);
    EXPECT_EQ(second.total_width, 64);
    EXPECT_EQ(second.data_width, 64);
    EXPECT_EQ(second.speed, 3200);
    EXPECT_EQ(second.size, 8192U);
}

TEST(MemoryModules, EmptyListMeansNone)
{
    EXPECT_TRUE(machine_of("memory_module = []\n").memory_modules.empty());
}

TEST(MemoryModules, ModuleSaysEverything)
{
    const Machine machine = machine_of(R"([[memory_module]]
locator = "ChannelA-DIMM0"
bank_locator = "P0 CHANNEL C"
type = "DDR5"
total_width = 80
data_width = 32
speed = 5600
size_mib = 49152
)");
    ASSERT_EQ(machine.memory_modules.size(), 1U);
    const MemoryModule& module = machine.memory_modules.front();
    EXPECT_EQ(module.locator, "ChannelA-DIMM0");
    EXPECT_EQ(module.bank_locator, "P0 CHANNEL C");
    EXPECT_EQ(module.type, 0x22);
    EXPECT_EQ(module.total_width, 80);
    EXPECT_EQ(module.data_width, 32);
    EXPECT_EQ(module.speed, 5600);
    EXPECT_EQ(module.size, 49152U);
}

std::vector<std::string> bank_locators(const std::string& text)
{
    std::vector<std::string> locators;
    for (const MemoryModule& module : machine_of(text).memory_modules) {
        locators.push_back(module.bank_locator);
    }
    return locators;
}

TEST(MemoryModules, ChannelsTakeTurnsAndBanksAreCountedInEach)
{
    const std::string one = "[[memory_module]]\n";
    EXPECT_EQ(bank_locators(one + one + one + one),
              (std::vector<std::string>{"BANK 0 CHANNEL A", "BANK 0 CHANNEL B", "BANK 1 CHANNEL A",
                                        "BANK 1 CHANNEL B"}));
    EXPECT_EQ(
        bank_locators(one + "channel = \"F\"\n" + one + "channel = \"F\"\n" + one +
                      "bank_locator = \"\"\n" + one + "channel = \"Z\"\n"),
        (std::vector<std::string>{"BANK 0 CHANNEL F", "BANK 1 CHANNEL F", "", "BANK 0 CHANNEL Z"}));
}

TEST(MemoryModules, TotalWidthIsTheDatasIfNothingElseIsSaid)
{
    const Machine machine = machine_of("[[memory_module]]\ndata_width = 32\n");
    EXPECT_EQ(machine.memory_modules.front().total_width, 32);
}

TEST(MemoryModules, TypesHaveTheNumbersOfSmbios)
{
    const auto number = [](const std::string& type) {
        return machine_of("[[memory_module]]\ntype = \"" + type + "\"\n")
            .memory_modules.front()
            .type;
    };
    EXPECT_EQ(number("unknown"), 0x02);
    EXPECT_EQ(number("SDRAM"), 0x0F);
    EXPECT_EQ(number("DDR"), 0x12);
    EXPECT_EQ(number("DDR2"), 0x13);
    EXPECT_EQ(number("DDR3"), 0x18);
    EXPECT_EQ(number("DDR4"), 0x1A);
    EXPECT_EQ(number("DDR5"), 0x22);
    EXPECT_EQ(number("LPDDR"), 0x1B);
    EXPECT_EQ(number("LPDDR2"), 0x1C);
    EXPECT_EQ(number("LPDDR3"), 0x1D);
    EXPECT_EQ(number("LPDDR4"), 0x1E);
    EXPECT_EQ(number("LPDDR5"), 0x23);
}

TEST(MemoryModules, ThereAre64AtMost)
{
    const nimba::test::TempDirectory directory;
    const auto error_of_modules = [&](std::size_t count) {
        std::string text = "description = \"a\"\nmemory_module = [";
        for (std::size_t module = 0; module < count; ++module) {
            text += "{}, ";
        }
        return error_of(directory.write("machine.toml", text + "]\n"));
    };
    EXPECT_EQ(error_of_modules(64), "(no error)");
    EXPECT_EQ(error_of_modules(65),
              (directory.path() / "machine.toml").string() +
                  ":2: key 'memory_module': expected 64 tables at most, got a list");
}

class MemoryModuleError : public ::testing::TestWithParam<BadFile> {};

TEST_P(MemoryModuleError, IsOneLineWithPlaceKeyAndExpectation)
{
    const nimba::test::TempDirectory directory;
    const std::string file = directory.write("bad.toml", GetParam().text);
    EXPECT_EQ(error_of(file), file + GetParam().message);
}

#define MODULE(keys) "description = \"a\"\n[[memory_module]]\n" keys

// clang-format off
const std::vector<BadFile> kBadFiles{
    {"UnknownKey", MODULE("width = 64\n"),
     ":3: key 'memory_module[0].width': unknown key, expected one of \"locator\", \"channel\", "
     "\"bank_locator\", \"type\", \"total_width\", \"data_width\", \"speed\", \"size_mib\""},
    {"UnknownType", MODULE("type = \"ddr4\"\n"),
     ":3: key 'memory_module[0].type': expected one of \"unknown\", \"SDRAM\", \"DDR\", \"DDR2\", "
     "\"DDR3\", \"DDR4\", \"DDR5\", \"LPDDR\", \"LPDDR2\", \"LPDDR3\", \"LPDDR4\", \"LPDDR5\", "
     "got \"ddr4\""},
    {"SmallChannel", MODULE("channel = \"a\"\n"),
     ":3: key 'memory_module[0].channel': expected a letter from \"A\" to \"Z\", got \"a\""},
    {"ChannelBehindTheLast", MODULE("channel = \"[\"\n"),
     ":3: key 'memory_module[0].channel': expected a letter from \"A\" to \"Z\", got \"[\""},
    {"LongChannel", MODULE("channel = \"AB\"\n"),
     ":3: key 'memory_module[0].channel': expected a letter from \"A\" to \"Z\", got \"AB\""},
    {"ChannelBesideTheBankLocator", MODULE("channel = \"A\"\nbank_locator = \"BANK\"\n"),
     ":3: key 'memory_module[0].channel': expected no such key beside 'bank_locator', got \"A\""},
    {"LocatorOfTwoLines", MODULE("locator = \"a\\nb\"\n"),
     ":3: key 'memory_module[0].locator': expected a text of 64 ASCII characters at most, without "
     "control characters, got \"a\\u000ab\""},
    {"BankLocatorThatIsNotAscii", MODULE("bank_locator = \"\u00e4\"\n"),
     ":3: key 'memory_module[0].bank_locator': expected a text of 64 ASCII characters at most, "
     "without control characters, got \"\u00e4\""},
    {"LongLocator",
     MODULE("locator = \"12345678901234567890123456789012345678901234567890123456789012345\"\n"),
     ":3: key 'memory_module[0].locator': expected a text of 64 ASCII characters at most, without "
     "control characters, got "
     "\"12345678901234567890123456789012345678901234567890123456789012345\""},
    {"GreatWidth", MODULE("total_width = 65535\n"),
     ":3: key 'memory_module[0].total_width': expected a whole number from 0 to 65534, got 65535"},
    {"NegativeWidth", MODULE("data_width = -1\n"),
     ":3: key 'memory_module[0].data_width': expected a whole number from 0 to 65534, got -1"},
    {"GreatSpeed", MODULE("speed = 65535\n"),
     ":3: key 'memory_module[0].speed': expected a whole number from 0 to 65534, got 65535"},
    {"GreatSize", MODULE("size_mib = 2147483648\n"),
     ":3: key 'memory_module[0].size_mib': expected a whole number from 0 to 2147483647, "
     "got 2147483648"},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(All, MemoryModuleError, ::testing::ValuesIn(kBadFiles),
                         [](const auto& file) { return file.param.name; });

}  // namespace
}  // namespace nimba::sim::test
