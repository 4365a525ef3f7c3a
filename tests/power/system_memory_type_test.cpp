// SPDX-License-Identifier: MIT
// The DDR generation of the system's memory, from the text of dmidecode.
#include "system_memory_fixture.hpp"

#include <initializer_list>
#include <string>

namespace nimba::test {
namespace {

using SystemMemoryType = SystemMemory;

std::string modules(std::initializer_list<const char*> types)
{
    std::string text;
    for (const char* type : types) {
        text += module_of("64 bits", "A", type) + "\tType Detail: Synchronous\n";
    }
    return text;
}

TEST_F(SystemMemoryType, IsFourWhenNothingIsTold)
{
    EXPECT_EQ(type_of(""), 4);
    EXPECT_EQ(type_of("# dmidecode 3.4\nScanning /dev/mem for entry point.\n"), 4);
    EXPECT_EQ(type_of(modules({"DRAM"})), 4);
    EXPECT_EQ(type_of(modules({"Unknown"})), 4);
}

TEST_F(SystemMemoryType, IsThatOfASingleModule)
{
    EXPECT_EQ(type_of(modules({"DDR4"})), 4);
    EXPECT_EQ(type_of(modules({"DDR5"})), 5);
}

TEST_F(SystemMemoryType, IsFourWhenTheFirstModuleIsOfAnother)
{
    EXPECT_EQ(type_of(modules({"DDR3"})), 4);
    EXPECT_EQ(type_of(modules({"DDR3", "DDR5"})), 4);
    EXPECT_EQ(type_of(modules({"DDR6"})), 4);
    EXPECT_EQ(type_of(modules({"DDR2 FB-DIMM", "DDR5"})), 4);
    EXPECT_EQ(type_of(modules({"DDR50"})), 4);
}

TEST_F(SystemMemoryType, IsThatOfTheFirstModule)
{
    EXPECT_EQ(type_of(modules({"DDR5", "DDR4"})), 5);
    EXPECT_EQ(type_of(modules({"DDR4", "DDR5"})), 4);
    EXPECT_EQ(type_of(modules({"DDR5", "DDR3", "DDR3", "DDR3", "DDR3", "DDR3", "DDR3", "DDR3",
                               "DDR3", "DDR3"})),
              5);
}

TEST_F(SystemMemoryType, IsToldOfLowPowerMemoryToo)
{
    EXPECT_EQ(type_of(modules({"LPDDR5"})), 5);
    EXPECT_EQ(type_of(modules({"LPDDR4"})), 4);
    EXPECT_EQ(type_of(modules({"DDR 5"})), 5);
}

TEST_F(SystemMemoryType, SkipsModulesOfUnknownWidth)
{
    const std::string empty_slot = module_of("Unknown", "A", "DDR5");
    EXPECT_EQ(type_of(empty_slot), 4);
    EXPECT_EQ(type_of(empty_slot + modules({"DDR4"})), 4);
    EXPECT_EQ(type_of(module_of("Unknown", "A", "DDR4") + modules({"DDR5"})), 5);
}

TEST_F(SystemMemoryType, CountsAModuleWhoseWidthIsNoNumber)
{
    EXPECT_EQ(type_of(module_of("some bits", "A", "DDR5") + modules({"DDR4"})), 5);
}

TEST_F(SystemMemoryType, SkipsLinesThatLackTypeOrDdr)
{
    EXPECT_EQ(type_of(module_of("64 bits", "A", "Unknown") + "\tPart Number: DDR4\n" +
                      "\tDetail: DDR4\n\tType Detail: DDR5\n"),
              5);
    EXPECT_EQ(type_of(module_of("64 bits", "A", "Unknown") + "\ttype: DDR5\n\tType: ddr5\n"), 4);
}

TEST_F(SystemMemoryType, CountsATypeOnceForEachWidth)
{
    EXPECT_EQ(type_of("\tType: DDR4\n\tTotal Width: 64 bits\n\tType: DDR5\n\tType: DDR4\n"), 5);
    EXPECT_EQ(type_of("\tType: DDR5\n"), 4);
}

TEST_F(SystemMemoryType, NeedsNoBank)
{
    EXPECT_EQ(type_of("\tTotal Width: 64 bits\n\tType: DDR5\n"), 5);
    EXPECT_EQ(type_of("\tTotal Width: 64 bits\n\tType: DDR5"), 5);
}

TEST_F(SystemMemoryType, IsReadNoFurtherThanEightModules)
{
    directory_.write("text",
                     modules({"DDR5", "DDR4", "DDR3", "DDR4", "DDR4", "DDR4", "DDR4", "DDR4"}));
    make_command(
        "cat \"$here/text\"\n"
        "head -c 4000000 /dev/zero 2>/dev/null || : >\"$here/cut\"\n");
    EXPECT_EQ(runShellCommand_getMemoryTYpe(), 5);
    EXPECT_TRUE(exists("cut"));
}

TEST_F(SystemMemoryType, IsReadFurtherThanSevenModules)
{
    directory_.write("text", modules({"DDR5", "DDR4", "DDR3", "DDR4", "DDR4", "DDR4", "DDR4"}));
    make_command("cat \"$here/text\"\nhead -c 4000000 /dev/zero || : >\"$here/cut\"\n");
    EXPECT_EQ(runShellCommand_getMemoryTYpe(), 5);
    EXPECT_FALSE(exists("cut"));
}

TEST_F(SystemMemoryType, CutsLinesAt1023Bytes)
{
    const std::string width = "Total Width: 64 bits\n";
    const std::string type = "Type: DDR";                                  // 9 bytes
    EXPECT_EQ(type_of(width + std::string(1013, '.') + type + "5\n"), 5);  // up to byte 1023
    EXPECT_EQ(type_of(width + std::string(1014, '.') + type + "5\n"), 4);
    EXPECT_EQ(type_of(width + std::string(1020, '.') + type + "5\n"), 4);
    EXPECT_EQ(type_of(width + std::string(1023, '.') + type + "5\n"), 5);
}

}  // namespace
}  // namespace nimba::test
