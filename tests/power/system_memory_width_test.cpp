// SPDX-License-Identifier: MIT
// The width of the system's memory, from the text of dmidecode.
#include "system_memory_fixture.hpp"

#include <initializer_list>
#include <string>
#include <string_view>

namespace nimba::test {
namespace {

using SystemMemoryWidth = SystemMemory;

// Modules of these widths, on channels A and B in turn.
std::string modules(std::initializer_list<const char*> widths)
{
    std::string text;
    bool even = true;
    for (const char* width : widths) {
        text += module_of(std::string{width} + " bits", even ? "A" : "B");
        even = !even;
    }
    return text;
}

TEST_F(SystemMemoryWidth, IsZeroWhenNothingIsTold)
{
    EXPECT_EQ(width_of(""), 0);
    EXPECT_EQ(width_of("# dmidecode 3.4\nScanning /dev/mem for entry point.\n"), 0);
}

TEST_F(SystemMemoryWidth, IsThatOfASingleModule)
{
    EXPECT_EQ(width_of(modules({"64"})), 64);
    EXPECT_EQ(width_of(modules({"128"})), 128);
}

TEST_F(SystemMemoryWidth, IsTheSumOfTwoEqualModulesOnTwoChannels)
{
    EXPECT_EQ(width_of(modules({"64", "64"})), 128);
    EXPECT_EQ(width_of(modules({"72", "72"})), 144);
}

TEST_F(SystemMemoryWidth, IsThatOfTheFirstOfTwoModulesOnOneChannel)
{
    EXPECT_EQ(width_of(module_of("64 bits", "A") + module_of("64 bits", "A")), 64);
}

TEST_F(SystemMemoryWidth, IsThatOfTheFirstOfTwoUnequalModules)
{
    EXPECT_EQ(width_of(modules({"64", "32"})), 64);
    EXPECT_EQ(width_of(modules({"32", "64"})), 32);
}

TEST_F(SystemMemoryWidth, IsThatOfTheFirstOfThreeModules)
{
    EXPECT_EQ(width_of(modules({"64", "64", "64"})), 64);
    EXPECT_EQ(width_of(modules({"32", "64", "64"})), 32);
}

TEST_F(SystemMemoryWidth, IsTheSumOfFourModulesInTwoEqualPairs)
{
    EXPECT_EQ(width_of(modules({"64", "64", "64", "64"})), 256);
    EXPECT_EQ(width_of(modules({"64", "32", "64", "32"})), 192);
    const std::string module = module_of("64 bits", "A");
    EXPECT_EQ(width_of(module + module + module + module), 256);
}

TEST_F(SystemMemoryWidth, IsThatOfTheFirstOfFourOtherModules)
{
    EXPECT_EQ(width_of(modules({"64", "64", "64", "32"})), 64);
    EXPECT_EQ(width_of(modules({"64", "64", "32", "64"})), 64);
    EXPECT_EQ(width_of(modules({"64", "32", "32", "64"})), 64);
    EXPECT_EQ(width_of(modules({"64", "64", "32", "32"})), 64);
}

TEST_F(SystemMemoryWidth, IsThatOfTheFirstOfMoreModules)
{
    EXPECT_EQ(width_of(modules({"64", "64", "64", "64", "64"})), 64);
    EXPECT_EQ(width_of(modules({"64", "64", "64", "64", "64", "64", "64", "64"})), 64);
    EXPECT_EQ(width_of(modules({"64", "64", "64", "64", "64", "64", "64", "64", "32"})), 64);
}

TEST_F(SystemMemoryWidth, IsReadNoFurtherThanEightModules)
{
    directory_.write("text", modules({"64", "32", "16", "8", "4", "2", "1", "64"}));
    const std::string rest = "head -c 4000000 /dev/zero 2>/dev/null || : >\"$here/cut\"\n";
    make_command("cat \"$here/text\"\n" + rest);
    EXPECT_EQ(runShellCommand_getBitWidth(), 64);
    EXPECT_TRUE(exists("cut"));
}

TEST_F(SystemMemoryWidth, IsReadFurtherThanSevenModules)
{
    directory_.write("text", modules({"64", "32", "16", "8", "4", "2", "1"}));
    make_command("cat \"$here/text\"\nhead -c 4000000 /dev/zero || : >\"$here/cut\"\n");
    EXPECT_EQ(runShellCommand_getBitWidth(), 64);
    EXPECT_FALSE(exists("cut"));
}

TEST_F(SystemMemoryWidth, SkipsModulesOfUnknownWidth)
{
    const std::string empty_slot = module_of("Unknown", "A");
    EXPECT_EQ(width_of(empty_slot), 0);
    EXPECT_EQ(width_of(empty_slot + module_of("64 bits", "A") + empty_slot +
                       module_of("64 bits", "B") + empty_slot),
              128);
}

TEST_F(SystemMemoryWidth, ReadsAChannelAsAHexadecimalNumber)
{
    EXPECT_EQ(width_of(module_of("64 bits", "C") + module_of("64 bits", "D")), 128);
    EXPECT_EQ(width_of(module_of("64 bits", "E") + module_of("64 bits", "F")), 128);
    EXPECT_EQ(width_of(module_of("64 bits", "A") + module_of("64 bits", "a")), 64);
    EXPECT_EQ(width_of(module_of("64 bits", "B") + module_of("64 bits", "0xB")), 64);
    EXPECT_EQ(width_of(module_of("64 bits", "B") + module_of("64 bits", "11")), 128);
    EXPECT_EQ(width_of(module_of("64 bits", "1") + module_of("64 bits", "2")), 128);
    EXPECT_EQ(width_of(module_of("64 bits", "1") + module_of("64 bits", "01")), 64);
    EXPECT_EQ(width_of(module_of("64 bits", "A DIMM 0") + module_of("64 bits", "A DIMM 1")), 64);
    EXPECT_EQ(width_of(module_of("64 bits", "  A") + module_of("64 bits", "\tB")), 128);
}

TEST_F(SystemMemoryWidth, TakesLettersBehindFForOneChannel)
{
    EXPECT_EQ(width_of(module_of("64 bits", "G") + module_of("64 bits", "H")), 64);
    EXPECT_EQ(width_of(module_of("64 bits", "A") + module_of("64 bits", "H")), 128);
}

TEST_F(SystemMemoryWidth, NeedsBitsTotalAndWidthInOneLine)
{
    const std::string bank = "\tBank Locator: P0 CHANNEL A\n";
    EXPECT_EQ(width_of("\tTotal Width: 64\n" + bank), 0);
    EXPECT_EQ(width_of("\tData Width: 64 bits\n" + bank), 0);
    EXPECT_EQ(width_of("\tTotal Width 64 bits\n" + bank), 0);
    EXPECT_EQ(width_of("\tTotal\n\tWidth: 64 bits\n" + bank), 0);
    EXPECT_EQ(width_of("bits Total Width:64\n" + bank), 64);
    EXPECT_EQ(width_of("\tWidth:  \t64 bits in Total\n" + bank), 64);
}

TEST_F(SystemMemoryWidth, StaysWhereALineTellsNoNumber)
{
    EXPECT_EQ(width_of(module_of("some bits", "A") + module_of("64 bits", "B")), 0);
    EXPECT_EQ(width_of(module_of("64 bits", "A") + module_of("some bits", "B")), 64);
    EXPECT_EQ(width_of("\tTotal Width: 32 bits\n" + module_of("some bits", "A")), 32);
}

TEST_F(SystemMemoryWidth, MayBeNegativeAndWraps)
{
    EXPECT_EQ(width_of(modules({"-64"})), -64);
    EXPECT_EQ(width_of(modules({"-64", "-64"})), -128);
    EXPECT_EQ(width_of(modules({"2147483647", "2147483647"})), -2);
    EXPECT_EQ(width_of(modules({"2147483647", "1", "2147483647", "1"})), 0);
}

TEST_F(SystemMemoryWidth, IsReadFromLinesThatEndAtANul)
{
    constexpr std::string_view kHidden{"\tTotal Width: 64\0 bits\n", 23};
    constexpr std::string_view kShown{"\tTotal Width: 64 bits\0\n", 23};
    EXPECT_EQ(width_of(kHidden), 0);
    EXPECT_EQ(width_of(kShown), 64);
}

TEST_F(SystemMemoryWidth, CountsAModuleAtItsBankAlone)
{
    const std::string width = "\tTotal Width: 64 bits\n";
    EXPECT_EQ(width_of(width + "\tBank Locator: CHANNEL A\n" + width + "\tBank Locator: A\n" +
                       width + "\tLocator: CHANNEL B\n"),
              64);
    EXPECT_EQ(width_of(width + "\tBank Locator: CHANNEL A\n" + width +
                       "\tBank Locator: channel B\n" + "CHANNEL B is a Bank\n"),
              128);
}

TEST_F(SystemMemoryWidth, CountsABankOnceForEachWidth)
{
    const std::string width = "\tTotal Width: 64 bits\n";
    const std::string bank_a = "\tBank Locator: CHANNEL A\n";
    const std::string bank_b = "\tBank Locator: CHANNEL B\n";
    EXPECT_EQ(width_of(width + bank_a + bank_b), 64);
    EXPECT_EQ(width_of(bank_b + width + bank_a), 64);
    EXPECT_EQ(width_of(width + bank_a + bank_a + width + bank_b), 128);
    EXPECT_EQ(width_of(bank_a + width + bank_a + width + bank_a + width), 64);
}

TEST_F(SystemMemoryWidth, IsTheLastOneBeforeABank)
{
    EXPECT_EQ(width_of("\tTotal Width: 32 bits\n\tTotal Width: 64 bits\n"
                       "\tBank Locator: CHANNEL A\n"),
              64);
}

TEST_F(SystemMemoryWidth, IsToldWithoutABank)
{
    EXPECT_EQ(width_of("\tTotal Width: 64 bits\n"), 64);
    EXPECT_EQ(width_of("\tTotal Width: 64 bits"), 64);
    EXPECT_EQ(width_of(modules({"64", "64"}) + "\tTotal Width: 32 bits\n"), 128);
}

TEST_F(SystemMemoryWidth, CutsLinesAt1023Bytes)
{
    const std::string width = "Total Width: 64";                       // 15 bytes
    EXPECT_EQ(width_of(width + std::string(1004, ' ') + "bits"), 64);  // up to byte 1023
    EXPECT_EQ(width_of(width + std::string(1005, ' ') + "bits"), 0);
    EXPECT_EQ(width_of("Total" + std::string(2000, ' ') + "Width: 64 bits\n"), 0);
}

TEST_F(SystemMemoryWidth, ReadsTheRestOfACutLineAsALine)
{
    EXPECT_EQ(width_of(std::string(1023, '.') + "Total Width: 64 bits\n"), 64);
    EXPECT_EQ(width_of(std::string(1022, '.') + "Total Width: 64 bits\n"), 0);
    EXPECT_EQ(width_of(std::string(1018, '.') + "TotalTotal Width: 64 bits\n"), 64);
}

}  // namespace
}  // namespace nimba::test
