// SPDX-License-Identifier: MIT
#include "tools/smi/report/html.hpp"

#include <gtest/gtest.h>

namespace nimba::smi::page {
namespace {

TEST(ReportHtml, WhatHasAMeaningInHtmlIsText)
{
    EXPECT_EQ(Html::text("<script>alert('x')</script> & \"y\"").str(),
              "&lt;script&gt;alert(&apos;x&apos;)&lt;/script&gt; &amp; &quot;y&quot;");
}

TEST(ReportHtml, ControlCharactersAndWhatIsNoUtf8AreShown)
{
    EXPECT_EQ(Html::text("a\x1b[2J\nb\x7f").str(), "a\\x1b[2J\\x0ab\\x7f");
    EXPECT_EQ(Html::text("\xff|\xc3|\xed\xa0\x80").str(), "\uFFFD|\uFFFD|\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(Html::text("\u202etxt").str(), "\\u202etxt");
    EXPECT_EQ(Html::text(std::string_view{"a\0b", 3}).str(), "a\\x00b");
}

TEST(ReportHtml, TheFirstCellOfARowIsItsHeading)
{
    EXPECT_EQ(
        table("What <it> is", {{"Name"}, {"Size", true}}, {{Html::text("a"), Html::text("1")}})
            .str(),
        "<div class=\"wide\" role=\"region\" tabindex=\"0\" aria-label=\"What &lt;it&gt; is\">"
        "<table><caption>What &lt;it&gt; is</caption><thead><tr><th scope=\"col\">Name</th>"
        "<th scope=\"col\" class=\"number\">Size</th></tr></thead>\n"
        "<tbody><tr><th scope=\"row\">a</th><td class=\"number\">1</td></tr>\n"
        "</tbody></table></div>\n");
}

TEST(ReportHtml, WhatIsLeftOutIsSaid)
{
    EXPECT_EQ(left_out(5, 5, "rows").str(), "");
    EXPECT_EQ(left_out(5, 6, "rows").str(), "<p>5 of 6 rows are shown.</p>\n");
}

TEST(ReportHtml, ABarIsNeitherBelowNothingNorBeyondTheWhole)
{
    const auto with = [](const char* width) {
        return std::string{"<span class=\"bar\" aria-hidden=\"true\"><span style=\"width:"} +
               width + "%\"></span></span>";
    };
    EXPECT_EQ(bar(0.25).str(), with("25.0"));
    EXPECT_EQ(bar(-1).str(), with("0.0"));
    EXPECT_EQ(bar(1e300).str(), with("100.0"));
}

}  // namespace
}  // namespace nimba::smi::page
