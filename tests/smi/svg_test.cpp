// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/svg.hpp"

#include "page_table_spaces.hpp"
#include "tools/smi/pagetable/svg_canvas.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace nimba::smi {
namespace {

std::vector<ProcessSpace> processes()
{
    ProcessSpace process = viewer({page(2048, 0, "1000"), page(2048, 1, "2000"),
                                   page(2048, 2, "a000", 1, 1), page(2048, 100, "c000")});
    process.title = "process 4100001 (<a&b>)";
    process.allocations = {{"a1", {0x100000000, 0x100003000}}, {"a2", {0x100001000, 0x100002000}}};
    return {process};
}

bool has(const std::string& text, const char* part)
{
    return text.find(part) != std::string::npos;
}

std::size_t count(const std::string& text, const std::string& part)
{
    std::size_t found = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++found;
    }
    return found;
}

TEST(Svg, LabelsWhatIsMappedAndWhatIsNot)
{
    const std::string text = svg_text(processes());
    EXPECT_TRUE(has(text, ">GPU address space of process 4100001 (&lt;a&amp;b&gt;)</text>"));
    EXPECT_TRUE(has(text, ">16 KiB mapped in 3 stretches of like pages; "));
    EXPECT_TRUE(has(text, ">0x100000000</text>"));
    EXPECT_TRUE(has(text, ">0x100003000</text>"));
    EXPECT_TRUE(has(text, ">segment 0</text>"));
    EXPECT_TRUE(has(text, ">4 KiB pages, 8 KiB</text>"));
    EXPECT_TRUE(has(text, ">4 KiB pages, snooped, 4 KiB</text>"));
    EXPECT_TRUE(has(text, ">388 KiB not mapped, folded</text>"));
    EXPECT_TRUE(has(text, ">allocation 0xa1</text>"));
    EXPECT_TRUE(has(text, ">allocation 0xa2</text>"));
}

TEST(Svg, TellsBelowWhatIsTooSmallForALabel)
{
    std::vector<PageRecord> pages;
    pages.reserve(200);
    for (int32_t i = 0; i < 200; ++i) {
        pages.push_back(page(2048, i, "1000", i == 150 ? 1 : 0));
    }
    const std::vector one{viewer(pages)};
    EXPECT_TRUE(
        has(svg_text(one), ">0x100096000-0x100096fff  segment 1, 4 KiB pages, 4 KiB</text>"));
}

TEST(Svg, PaintsWhatIsMappedOnlyInPartFainter)
{
    std::vector<PageRecord> pages;
    pages.reserve(512);
    for (int32_t i = 0; i < 512; i += 2) {
        pages.push_back(page(2048, i, "1000"));
    }
    const std::vector one{viewer(pages)};
    const std::string text = svg_text(one);
    EXPECT_TRUE(has(text, ">217 stretches, 868 KiB of 1.7 MiB mapped</text>"));
    EXPECT_EQ(count(text, "fill=\"#a6cee3\" fill-opacity=\"0.55\""), 1U);
    EXPECT_FALSE(has(svg_text(processes()), "fill-opacity"));
}

TEST(Svg, CountsSegmentsWhenThereAreMany)
{
    std::vector<PageRecord> pages;
    pages.reserve(512);
    for (int32_t i = 0; i < 512; ++i) {
        pages.push_back(page(2048, i, "1000", static_cast<uint16_t>(i)));
    }
    const std::vector one{viewer(pages)};
    EXPECT_TRUE(has(svg_text(one), ">473 segments</text>"));
}

TEST(Svg, BoundsTheTextsBelowAStrip)
{
    ProcessSpace process = viewer({page(2048, 0, "0"), page(2048, 1, "1000")});
    for (uint64_t i = 0; i < 100; ++i) {
        process.allocations.push_back({"c", {0x100000000 + i * 80, 0x100000000 + i * 80 + 80}});
    }
    const std::vector one{process};
    const std::string text = svg_text(one);
    EXPECT_EQ(count(text, "  allocation 0xc, 80 B</text>"), 12U);
    EXPECT_TRUE(has(text, ">and 88 more that are too small here</text>"));
}

TEST(Svg, DrawsNoMoreBoxesThanCanBeSeen)
{
    ProcessSpace process = viewer({page(2048, 0, "0"), page(2048, 1, "1000")});
    for (uint64_t i = 0; i < 8192; ++i) {
        process.allocations.push_back({"c", {0x100000000 + i, 0x100000000 + i + 1}});
    }
    const std::vector one{process};
    const std::size_t boxes = count(svg_text(one), "<rect ");
    EXPECT_GT(boxes, 500U);
    EXPECT_LT(boxes, 1100U);
}

TEST(Svg, OfNothingSaysSo)
{
    const std::vector nothing{viewer({})};
    EXPECT_TRUE(has(svg_text(nothing), ">nothing is mapped; "));
}

TEST(XmlText, HoldsNothingThatXmlCannot)
{
    EXPECT_EQ(xml_text("<a href=\"x\">'&amp;"), "&lt;a href=&quot;x&quot;&gt;&apos;&amp;amp;");
    EXPECT_EQ(xml_text(std::string_view{"\0\x1b\n\x7f", 4}), "\\x00\\x1b\\x0a\\x7f");
    EXPECT_EQ(xml_text("\xFF|\xEF\xBF\xBE|\xEF\xBF\xBF|\xC3\xA4"),
              "\xEF\xBF\xBD|\xEF\xBF\xBD|\xEF\xBF\xBD|\xC3\xA4");
}

TEST(SvgCanvas, IsADocument)
{
    SvgCanvas canvas;
    canvas.text(1, 2, "a<b", 18, SvgCanvas::Anchor::kEnd);
    EXPECT_EQ(canvas.document(30, "t&u"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"1040\" height=\"30\" "
              "viewBox=\"0 0 1040 30\" font-family=\"monospace\" fill=\"#111111\">\n"
              "<title>t&amp;u</title>\n"
              "<rect width=\"1040\" height=\"30\" fill=\"#ffffff\"/>\n"
              "<text x=\"1.0\" y=\"2.0\" font-size=\"18\" text-anchor=\"end\">a&lt;b</text>\n"
              "</svg>\n");
}

}  // namespace
}  // namespace nimba::smi
