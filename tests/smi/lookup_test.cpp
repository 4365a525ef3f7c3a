// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/lookup.hpp"

#include "page_table_spaces.hpp"
#include "tools/smi/pagetable/lookup_render.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <vector>

namespace nimba::smi {
namespace {

using Json = nlohmann::json;

ProcessSpace process()
{
    ProcessSpace process = viewer({page(2048, 0, "1a2b3000"), page(2048, 1, "1a2b4000"),
                                   page(2048, 2, "50000000", 1, 1), page(2048, 9, "text")});
    process.allocations = {{"a1", {0x100000000, 0x100003000}}, {"a2", {0x100008000, 0x10000a000}}};
    return process;
}

TEST(AddressLookup, FindsTheVeryByte)
{
    const auto lookup = look_up(process(), 0x100001234);
    EXPECT_EQ(lookup.path.size(), 3U);
    EXPECT_EQ(lookup.page, (MappedPage{1, {0x100001000, 0x100002000}, {12, 0, false}, 0x1a2b4234}));
    EXPECT_EQ(lookup.allocations, (std::vector<VmAllocation>{{"a1", {0x100000000, 0x100003000}}}));
    EXPECT_EQ(lookup.below, std::nullopt);
    EXPECT_EQ(look_up(process(), 0x100002fff).page,
              (MappedPage{2, {0x100002000, 0x100003000}, {12, 1, true}, 0x50000fff}));
    EXPECT_EQ(look_up(process(), 0x100009000).page,
              (MappedPage{9, {0x100009000, 0x10000a000}, {12, 0, false}, std::nullopt}));
}

TEST(AddressLookup, TellsWhatIsNextToAnAddressThatIsNotMapped)
{
    const auto lookup = look_up(process(), 0x100003000);
    EXPECT_EQ(lookup.page, std::nullopt);
    EXPECT_EQ(lookup.path.size(), 3U);
    EXPECT_EQ(lookup.below, (AddressRange{0x100000000, 0x100003000}));
    EXPECT_EQ(lookup.above, (AddressRange{0x100009000, 0x10000a000}));
    const auto low = look_up(process(), 0x10);
    EXPECT_EQ(low.path.size(), 1U);
    EXPECT_EQ(low.below, std::nullopt);
    EXPECT_EQ(low.above, (AddressRange{0x100000000, 0x100003000}));
    const auto beyond = look_up(process(), UINT64_MAX);
    EXPECT_TRUE(beyond.path.empty());
    EXPECT_EQ(beyond.below, (AddressRange{0x100009000, 0x10000a000}));
    EXPECT_EQ(beyond.above, std::nullopt);
}

TEST(AddressLookup, EndsAtTheLevelThatHasThePage)
{
    const PageRecord big{1, 1, 1, 4, 1, 0, 0, "40000000"};
    const auto lookup = look_up(viewer({big}), 0x100200005);
    EXPECT_EQ(lookup.path.size(), 2U);
    EXPECT_EQ(lookup.page, (MappedPage{1, {0x100200000, 0x100400000}, {21, 0, false}, 0x40000005}));
}

std::string text_of(uint64_t address)
{
    const std::vector processes{process()};
    return lookup_text(processes, address);
}

TEST(AddressLookup, IsShownAsThePathToThePage)
{
    EXPECT_EQ(text_of(0x100001234),
              "process 4100001 (viewer): 0x100001234 is mapped\n"
              "  level 0  index 0  0x0-0x7fffffffff  table 0x10000000  buffer pt0\n"
              "    level 1  index 4  0x100000000-0x13fffffff  table 0x10001000  buffer pt1\n"
              "      level 2  index 2048  0x100000000-0x1001fffff  table 0x10002000  buffer pt2\n"
              "        page 1  0x100001000-0x100001fff  4 KiB  segment 0\n"
              "  physical address  0x1a2b4234\n"
              "  allocation        0xa1  0x100000000-0x100002fff  12 KiB  offset 0x1234\n");
}

TEST(AddressLookup, IsShownWithoutAPhysicalAddressThatIsNoNumber)
{
    EXPECT_NE(text_of(0x100009000).find("  physical address  unknown: the driver tells \"text\"\n"),
              std::string::npos);
}

TEST(AddressLookup, IsShownAsWhereThePathEnds)
{
    EXPECT_EQ(text_of(0x100004000),
              "process 4100001 (viewer): 0x100004000 is not mapped\n"
              "  level 0  index 0  0x0-0x7fffffffff  table 0x10000000  buffer pt0\n"
              "    level 1  index 4  0x100000000-0x13fffffff  table 0x10001000  buffer pt1\n"
              "      level 2  index 2048  0x100000000-0x1001fffff  table 0x10002000  buffer pt2\n"
              "        the path ends here: its sub-table has no entry for the address\n"
              "  mapped below      0x100000000-0x100002fff  12 KiB\n"
              "  mapped above      0x100009000-0x100009fff  4 KiB\n"
              "  allocation        none has the address\n");
    EXPECT_EQ(text_of(0x8000000000),
              "process 4100001 (viewer): 0x8000000000 is not mapped\n"
              "  the path ends here: level 0 has no entry 1\n"
              "  mapped below      0x100009000-0x100009fff  4 KiB\n"
              "  mapped above      nothing\n"
              "  allocation        none has the address\n");
    EXPECT_NE(text_of(UINT64_MAX).find("\n  beyond the address space of 48 bits\n"),
              std::string::npos);
}

TEST(AddressLookup, IsADocument)
{
    const std::vector processes{process()};
    const auto document = Json::parse(lookup_json(AddressSplit{}, processes, 0x100001234, {}));
    EXPECT_EQ(document.at("schema"), "nimba-smi.pagetable-va.1");
    const auto& found = document.at("processes").at(0);
    EXPECT_EQ(found.at("pid"), 4100001);
    EXPECT_EQ(found.at("mapped"), true);
    EXPECT_EQ(found.at("path").size(), 3U);
    EXPECT_EQ(found.at("page").at("physical"), "0x1a2b4234");
    EXPECT_EQ(found.at("allocations").at(0).at("offset"), 0x1234);
}

}  // namespace
}  // namespace nimba::smi
