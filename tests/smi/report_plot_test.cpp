// SPDX-License-Identifier: MIT
#include "tools/smi/report/plot.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string_view>

namespace nimba::smi::page {
namespace {

std::size_t count_of(std::string_view text, std::string_view part)
{
    std::size_t count = 0;
    for (auto at = text.find(part); at != std::string_view::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

bool has(const std::string& text, std::string_view part)
{
    return text.find(part) != std::string::npos;
}

TEST(ReportPlot, ALineGoesFromItsFirstValueToItsLast)
{
    const std::string html =
        plot_html({"Clocks", "MHz", {0, 1, 2}, {{"engine", {0, 50, 100}}}}).str();
    EXPECT_TRUE(
        has(html, R"(<polyline class="line line0" points="70.0,174.0 345.0,94.0 620.0,14.0"/>)"))
        << html;
    EXPECT_TRUE(
        has(html, R"(<svg class="plot" viewBox="0 0 640 200" role="img" aria-label="Clocks">)"));
    EXPECT_TRUE(has(html, R"(text-anchor="end">100 MHz</text>)"));
    EXPECT_TRUE(has(html, R"(<td class="number">0 MHz</td><td class="number">100 MHz</td>)"
                          R"(<td class="number">100 MHz</td>)"));
}

TEST(ReportPlot, AMissingValueLeavesAGap)
{
    const std::string html =
        plot_html({"Clocks", "", {0, 1, 2, 3, 4}, {{"engine", {1, 2, {}, 3, {}}}}}).str();
    // The picture's and the legend's, and one value that stands alone.
    EXPECT_EQ(count_of(html, "<polyline"), 2U);
    EXPECT_EQ(count_of(html, "<circle"), 1U);
}

TEST(ReportPlot, LinesWithoutValuesAndPlotsWithoutLinesAreNone)
{
    EXPECT_EQ(plot_html({"Clocks", "", {0, 1}, {{"engine", {{}, {}}}}}).str(), "");
    EXPECT_EQ(plot_html({"Clocks", "", {0}, {{"engine", {1}}}}).str(), "");
    EXPECT_EQ(plot_html({"Clocks", "", {3, 3}, {{"engine", {1, 2}}}}).str(), "");
    const std::string html =
        plot_html({"Clocks", "", {0, 1}, {{"engine", {1, 2}}, {"silent", {{}, {}}}}}).str();
    EXPECT_FALSE(has(html, "silent"));
}

TEST(ReportPlot, OfManySamplesTheExtremesAreSeen)
{
    std::vector<double> seconds(100'000);
    std::vector<std::optional<double>> values(100'000, 10.0);
    for (std::size_t i = 0; i < seconds.size(); ++i) {
        seconds[i] = static_cast<double>(i);
    }
    values[54'321] = 100;
    const std::string html = plot_html({"Clocks", "", seconds, {{"engine", values}}}).str();
    EXPECT_LT(html.size(), 20'000U);
    EXPECT_EQ(count_of(html, ",14.0"), 1U);
}

TEST(ReportPlot, ValuesThatMakeNoSenseStayInThePicture)
{
    const std::string html =
        plot_html({"Clocks", "", {0, 1, 2}, {{"engine", {-5, 1.7e308, 0}}}}).str();
    EXPECT_FALSE(has(html, "nan"));
    EXPECT_FALSE(has(html, "inf,"));
    EXPECT_TRUE(has(html, R"(points="70.0,174.0 )")) << html;
}

TEST(ReportPlot, NamesAreTexts)
{
    const std::string html = plot_html({"<b>", "<i>", {0, 1}, {{"<script>", {1, 2}}}}).str();
    for (const char* const markup : {"<b>", "<i>", "<script>"}) {
        EXPECT_FALSE(has(html, markup)) << markup;
    }
}

}  // namespace
}  // namespace nimba::smi::page
