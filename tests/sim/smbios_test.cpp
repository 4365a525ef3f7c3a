// SPDX-License-Identifier: MIT
// The bytes of a simulated machine's SMBIOS files.
#include "smbios.hpp"

#include <gtest/gtest.h>

#include <numeric>
#include <string>
#include <string_view>
#include <vector>

namespace nimba::sim::test {
namespace {

using namespace std::literals;

constexpr std::string_view kEmptyArray =
    "\x10\x17\x00\x10\x03\x03\x03\x00\x00\x00\x80\xfe\xff\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00"
    "\x00\x00"sv;
constexpr std::string_view kEnd = "\x7f\x04\x00\x7f\x00\x00"sv;

// The structures of a table with one module, without that of the array before and the end behind.
std::string structure_of(const MemoryModule& module)
{
    const std::string table = make_smbios_files({module}).dmi;
    return table.substr(kEmptyArray.size(), table.size() - kEmptyArray.size() - kEnd.size());
}

TEST(Smbios, MachineWithoutModulesHasAnArrayWithoutPlaces)
{
    const std::string table = make_smbios_files({}).dmi;
    EXPECT_EQ(table.substr(0, kEmptyArray.size()), kEmptyArray);
    EXPECT_EQ(table.substr(kEmptyArray.size()), kEnd);
}

TEST(Smbios, ModuleIsAStructureWithItsTextsBehind)
{
    EXPECT_EQ(structure_of({"DIMM 0", "BANK 0 CHANNEL A", 0x1A, 72, 64, 3200, 8192}),
              "\x11\x28\x00\x11\x00\x10\xfe\xff\x48\x00\x40\x00\x00\x20\x09\x00\x01\x02\x1a\x80\x00"
              "\x80\x0c\x03\x00\x00\x00\x00\x00\x00\x00\x00\x80\x0c\x00\x00\x00\x00\x00\x00"
              "DIMM 0\0BANK 0 CHANNEL A\0Simulated\0\0"sv);
}

TEST(Smbios, WhatIsNotKnownHasTheNumbersForIt)
{
    EXPECT_EQ(structure_of({"", "", 2, 0, 0, 0, 0}),
              "\x11\x28\x00\x11\x00\x10\xfe\xff\xff\xff\xff\xff\x00\x00\x09\x00\x00\x00\x02\x80\x00"
              "\x00\x00\x01\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00"
              "Simulated\0\0"sv);
}

// The words of the size and of its extension.
std::string sizes_of(uint32_t mebibytes)
{
    const std::string structure = structure_of({"", "", 2, 0, 0, 0, mebibytes});
    return structure.substr(0x0c, 2).append(structure, 0x1c, 4);
}

TEST(Smbios, SizeFrom32GiBOnIsInTheExtension)
{
    EXPECT_EQ(sizes_of(32766), "\xfe\x7f\x00\x00\x00\x00"sv);
    EXPECT_EQ(sizes_of(32767), "\xff\x7f\xff\x7f\x00\x00"sv);
    EXPECT_EQ(sizes_of(2147483647), "\xff\x7f\xff\xff\xff\x7f"sv);
}

TEST(Smbios, ModulesFollowWithHandlesOfTheirOwnAndTheArrayCountsThem)
{
    const MemoryModule module{"", "", 2, 0, 0, 0, 1048576};
    const std::string table = make_smbios_files({module, module}).dmi;
    constexpr std::size_t kModuleSize = 51;
    ASSERT_EQ(table.size(), 25 + 2 * kModuleSize + 6);
    EXPECT_EQ(table.substr(0, 25),
              "\x10\x17\x00\x10\x03\x03\x03\x00\x00\x00\x80\xfe\xff\x02\x00\x00\x00\x00\x00\x00\x02"
              "\x00\x00\x00\x00"sv);
    EXPECT_EQ(table.substr(25, 4), "\x11\x28\x00\x11"sv);
    EXPECT_EQ(table.substr(25 + kModuleSize, 4), "\x11\x28\x01\x11"sv);
    EXPECT_EQ(table.substr(25 + 2 * kModuleSize), kEnd);
}

TEST(Smbios, EntryPointTellsTheTablesSizeAndAddsUpToZero)
{
    EXPECT_EQ(
        make_smbios_files({}).smbios_entry_point,
        "_SM3_\x34\x18\x03\x00\x00\x01\x00\x1f\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00"sv);
    const std::vector<MemoryModule> modules(64, {"DIMM", "BANK", 0x22, 64, 64, 4800, 1});
    const std::string bytes = make_smbios_files(modules).smbios_entry_point;
    EXPECT_EQ(std::accumulate(bytes.begin(), bytes.end(), 0) % 256, 0);
    EXPECT_EQ(bytes.substr(12, 4), "\x5f\x0f\x00\x00"sv);
}

}  // namespace
}  // namespace nimba::sim::test
