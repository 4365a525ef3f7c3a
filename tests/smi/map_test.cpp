// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/map.hpp"

#include "page_table_spaces.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <vector>

namespace nimba::smi {
namespace {

using Json = nlohmann::json;

std::vector<ProcessSpace> processes()
{
    ProcessSpace process =
        viewer({page(2048, 0, "1000"), page(2048, 1, "2000"), page(2048, 2, "a000", 1, 1),
                page(2048, 4, "b000"), page(2048, 100, "c000")});
    process.allocations = {{"a1", {0x100000000, 0x100003000}},
                           {"b\x1b", {0x100064000, 0x100065000}}};
    return {process};
}

TEST(Map, HasARowForEachPatchAndGap)
{
    EXPECT_EQ(
        map_text(processes(), {}),
        "process 4100001 (viewer): 20 KiB mapped in 4 stretches of like pages\n"
        "0x100000000  ########################################       8 KiB  segment 0, 4 KiB "
        "pages, "
        "allocation 0xa1\n"
        "0x100002000  ####################                           4 KiB  segment 1, 4 KiB "
        "pages, "
        "snooped, allocation 0xa1\n"
        "0x100003000  ....................                           4 KiB  not mapped\n"
        "0x100004000  ####################                           4 KiB  segment 0, 4 KiB "
        "pages\n"
        "0x100005000  ~ ~ ~                                        380 KiB  not mapped, folded\n"
        "0x100064000  ####################                           4 KiB  segment 0, 4 KiB "
        "pages, "
        "allocation b\\x1b\n");
}

TEST(Map, ColoursTheBarsBySegment)
{
    const std::string text = map_text(processes(), {.coloured = true});
    EXPECT_NE(text.find("\n0x100000000  \x1b[36m####"), std::string::npos);
    EXPECT_NE(text.find("\n0x100002000  \x1b[32m####################\x1b[0m   "),
              std::string::npos);
    EXPECT_EQ(map_text(processes(), {}).find('\x1b'), std::string::npos);
}

TEST(Map, HasNoColourForSeveralSegments)
{
    std::vector<PageRecord> pages;
    pages.reserve(64);
    for (int32_t i = 0; i < 64; ++i) {
        pages.push_back(page(2048, i, "1000", static_cast<uint16_t>(i % 2)));
    }
    const std::vector one{viewer(pages)};
    const std::string text = map_text(one, {.coloured = true});
    EXPECT_NE(text.find("\x1b[36m#\x1b[0m"), std::string::npos);
    EXPECT_NE(text.find("\n0x10001f000  ######################################"),
              std::string::npos);
}

TEST(Map, ShortensItsBarsForANarrowTerminal)
{
    // Without its bar the longest row has 75 columns.
    EXPECT_NE(map_text(processes(), {.columns = 100})
                  .find("\n0x100000000  #########################       8 KiB  "),
              std::string::npos);
    EXPECT_NE(
        map_text(processes(), {.columns = 40}).find("\n0x100000000  ##########       8 KiB  "),
        std::string::npos);
    EXPECT_EQ(map_text(processes(), {.columns = 200}), map_text(processes(), {}));
}

TEST(Map, TellsWhatIsMappedOnlyInPart)
{
    std::vector<PageRecord> pages;
    pages.reserve(66);
    for (int32_t i = 0; i < 66; i += 2) {
        pages.push_back(page(2048, i, "1000"));
    }
    const std::vector one{viewer(pages)};
    EXPECT_TRUE(
        map_text(one, {}).ends_with("  ++++++++++++++++++++++++++++++++++++++++      12 KiB  2 "
                                    "stretches, 8 KiB mapped: segment "
                                    "0, 4 KiB pages (8 KiB)\n"));
}

TEST(Map, HasNoWiderAddressesThanItShows)
{
    ProcessSpace process;
    process.title = "process 1";
    process.space = space_with({table(0, 511)}, {{0, 511, 0, 511, 1, 0, 0, "0"}});
    const std::vector one{process};
    EXPECT_NE(map_text(one, {}).find("\n0xffffc0000000  ####"), std::string::npos);
}

TEST(Map, OfNothingSaysSo)
{
    const std::vector nothing{viewer({})};
    EXPECT_EQ(map_text(nothing, {}), "process 4100001 (viewer): nothing is mapped\n");
}

TEST(Map, CountsAllocationsWhenThereAreMany)
{
    std::vector processes{viewer({page(2048, 0, "1000")})};
    processes[0].allocations.assign(4, {"a1", {0x100000000, 0x100001000}});
    EXPECT_NE(map_text(processes, {}).find("segment 0, 4 KiB pages, 4 allocations\n"),
              std::string::npos);
}

TEST(Map, IsADocument)
{
    const auto document = Json::parse(map_json(AddressSplit{}, processes(), {}));
    EXPECT_EQ(document.at("schema"), "nimba-smi.pagetable-map.1");
    const auto& process = document.at("processes").at(0);
    EXPECT_EQ(process.at("mapped"), 20480);
    const auto& patches = process.at("patches");
    ASSERT_EQ(patches.size(), 4U);
    EXPECT_EQ(patches.at(1).at("begin"), "0x100002000");
    EXPECT_EQ(patches.at(1).at("kinds"), Json::parse(R"([{"page_size": 4096, "segment": 1,
        "snooped": true, "bytes": 4096}])"));
    EXPECT_EQ(patches.at(1).at("allocations").at(0).at("handle"), "0xa1");
    EXPECT_EQ(patches.at(3).at("allocations").at(0).at("handle"), nullptr);
}

}  // namespace
}  // namespace nimba::smi
