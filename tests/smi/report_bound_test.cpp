// SPDX-License-Identifier: MIT
#include "tools/smi/report/bound.hpp"
#include "tools/smi/report/value.hpp"

#include <gtest/gtest.h>

namespace nimba::smi::page {
namespace {

Document numbers(int count)
{
    Document list = Document::array();
    for (int i = 0; i < count; ++i) {
        list.push_back(i);
    }
    return list;
}

TEST(ReportBound, ListsAreCutByHowDeepTheyAre)
{
    Document document{
        {"outer", numbers(201)}, {"whole", numbers(200)}, {"in", {{"an object", numbers(202)}}}};
    document["adapters"] = Document::array();
    document["adapters"].push_back({{"devices", numbers(101)}});
    document["adapters"].front()["more"].push_back({{"processes", numbers(7)}});
    bound(document);
    EXPECT_EQ(document["outer"], numbers(200));
    EXPECT_EQ(document["outer_left_out"], 1);
    EXPECT_EQ(document["whole"].size(), 200U);
    EXPECT_FALSE(document.contains("whole_left_out"));
    EXPECT_EQ(document["in"]["an object_left_out"], 2);
    const Document& adapter = document["adapters"].front();
    EXPECT_EQ(adapter["devices"].size(), 100U);
    EXPECT_EQ(adapter["devices_left_out"], 1);
    EXPECT_EQ(adapter["more"].front()["processes"], numbers(4));
    EXPECT_EQ(adapter["more"].front()["processes_left_out"], 3);
}

TEST(ReportBound, WhatWasCutIsCountedStill)
{
    Document document{{"outer", numbers(1000)}, {"whole", numbers(3)}};
    bound(document);
    EXPECT_EQ(whole_size(document, "outer"), 1000U);
    EXPECT_EQ(whole_size(document, "whole"), 3U);
    EXPECT_EQ(whole_size(document, "none"), 0U);
    EXPECT_EQ(whole_size({{"x", 1}, {"x_left_out", "many"}}, "x"), 0U);
}

}  // namespace
}  // namespace nimba::smi::page
