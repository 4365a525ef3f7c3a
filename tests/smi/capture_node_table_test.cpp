// SPDX-License-Identifier: MIT
// What a capture reads, against the library's own table of nodes.
#include "power/node_names.hpp"
#include "tools/smi/capture/node_table.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace nimba::smi {
namespace {

using Names = std::set<std::string, std::less<>>;

Names captured(NodeBase base)
{
    Names names;
    for (const NodeRow& row : node_table()) {
        if (row.base == base) {
            names.emplace(row.path);
        }
    }
    return names;
}

// The names between two places of the library's table.
Names read_by_the_library(int64_t begin, int64_t end)
{
    Names names;
    for (auto place = static_cast<std::size_t>(begin); place < static_cast<std::size_t>(end);
         ++place) {
        names.emplace(kNodeNames.at(place));
    }
    names.erase("none");
    return names;
}

TEST(CaptureNodeTable, HasEachInfoNodeThatTheLibraryReads)
{
    const auto end = static_cast<int64_t>(kNodeNames.size());
    EXPECT_EQ(captured(NodeBase::kInfo), read_by_the_library(kInfoNodes, end));
}

TEST(CaptureNodeTable, HasEachHwmonNodeThatTheLibraryReads)
{
    EXPECT_EQ(captured(NodeBase::kHwmon), read_by_the_library(kHwmonNodes, kInfoNodes));
}

TEST(CaptureNodeTable, HasNoNodeTwice)
{
    std::set<std::pair<NodeBase, std::string_view>> seen;
    for (const NodeRow& row : node_table()) {
        EXPECT_TRUE(seen.emplace(row.base, row.path).second) << row.path;
    }
}

}  // namespace
}  // namespace nimba::smi
