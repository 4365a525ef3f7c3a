// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/tree.hpp"

#include "page_table_spaces.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <vector>

namespace nimba::smi {
namespace {

using Json = nlohmann::json;

std::vector<ProcessSpace> processes()
{
    return {viewer({PageRecord{1, 1, 1, 4, 1, 0, 2, "40000000"}, page(2048, 0, "1a2b3000", 0, 1),
                    page(2048, 1, "1a2b4000", 0, 1), page(2048, 2, "\x1b[2J")})};
}

TEST(Tree, ShowsRunsOfPagesAtFullDepth)
{
    EXPECT_EQ(tree_text(processes(), 3),
              "process 4100001 (viewer)\n"
              "level 0  index 0  0x0-0x7fffffffff  table 0x10000000  buffer pt0\n"
              "  level 1  index 4  0x100000000-0x13fffffff  table 0x10001000  buffer pt1\n"
              "    0x100200000-0x1003fffff  1 x 2 MiB  segment 2  -> 0x40000000\n"
              "    level 2  index 2048  0x100000000-0x1001fffff  table 0x10002000  buffer pt2\n"
              "      0x100000000-0x100001fff  2 x 4 KiB  segment 0  snooped  -> 0x1a2b3000\n"
              "      0x100002000-0x100002fff  1 x 4 KiB  segment 0  -> \"\\x1b[2J\"\n");
}

TEST(Tree, EndsAtItsDepth)
{
    EXPECT_EQ(tree_text(processes(), 0),
              "process 4100001 (viewer)\n"
              "level 0  index 0  0x0-0x7fffffffff  table 0x10000000  buffer pt0\n");
    EXPECT_EQ(tree_text(processes(), 2),
              "process 4100001 (viewer)\n"
              "level 0  index 0  0x0-0x7fffffffff  table 0x10000000  buffer pt0\n"
              "  level 1  index 4  0x100000000-0x13fffffff  table 0x10001000  buffer pt1\n"
              "    level 2  index 2048  0x100000000-0x1001fffff  table 0x10002000  buffer pt2\n");
}

TEST(Tree, IsADocument)
{
    const auto document = Json::parse(tree_json(AddressSplit{}, processes(), 3, {}));
    EXPECT_EQ(document.at("schema"), "nimba-smi.pagetable-tree.1");
    EXPECT_EQ(document.at("split"), (Json{9, 9, 9, 9, 12}));
    const auto& level1 = document.at("processes").at(0).at("tables").at(0).at("tables").at(0);
    EXPECT_EQ(level1.at("address"), "0x10001000");
    const Json run{{"begin", "0x100200000"}, {"end", "0x100400000"}, {"bytes", 2097152},
                   {"first_index", 1},       {"pages", 1},           {"page_size", 2097152},
                   {"segment", 2},           {"snooped", false},     {"physical", "0x40000000"}};
    EXPECT_EQ(level1.at("runs"), Json::array({run}));
    EXPECT_EQ(level1.at("tables").at(0).at("runs").at(1).at("physical"), nullptr);
    const auto roots = Json::parse(tree_json(AddressSplit{}, processes(), 0, {}));
    EXPECT_FALSE(roots.at("processes").at(0).at("tables").at(0).contains("tables"));
}

}  // namespace
}  // namespace nimba::smi
