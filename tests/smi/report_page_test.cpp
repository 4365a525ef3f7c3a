// SPDX-License-Identifier: MIT
#include "tools/smi/report/captured.hpp"
#include "tools/smi/report/page.hpp"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace nimba::smi::page {
namespace {

bool has(const std::string& text, std::string_view part)
{
    return text.find(part) != std::string::npos;
}

archive::Capture capture_of_one_adapter()
{
    archive::Capture capture;
    capture.manifest.tool = "0.1.0";
    capture.manifest.time = "2026-03-01T12:00:00.250Z";
    archive::Adapter& adapter = capture.manifest.adapters.emplace_back();
    adapter.bus_id = "0000:01:00.0";
    adapter.name = "Gpu0:Nimba-K1";
    capture.samples.resize(2);
    capture.samples[1].time.seconds = 1;
    return capture;
}

std::string page_of(const archive::Capture& capture)
{
    return page_html(captured_content(capture, "/home/user/machine.tar.zst"));
}

std::string overview_with(const std::string& clock)
{
    return R"({"schema": "nimba-smi.overview.1", "adapters": [{"bus_id": "0000:01:00.0",
               "name": "Gpu0:Nimba-K1", "clocks": {"engine_clock": )" +
           clock + "}}]}";
}

TEST(ReportPage, ACaptureWithoutDocumentsTellsTheAdaptersAndWhatIsNotKnown)
{
    archive::Capture capture = capture_of_one_adapter();
    capture.manifest.problems = {"no permission to read /x: run as root"};
    capture.manifest.errors = {{1, "/sys/a%20b", "EACCES"}};
    const std::string page = page_of(capture);
    EXPECT_TRUE(has(page, "captured in machine.tar.zst"));
    EXPECT_FALSE(has(page, "/home/user"));
    EXPECT_TRUE(has(page, "Gpu0:Nimba-K1 (0000:01:00.0)"));
    EXPECT_TRUE(has(page, "<li>no permission to read /x: run as root</li>"));
    EXPECT_TRUE(has(page, R"(<th scope="row">/sys/a b</th><td>EACCES</td>)"));
    EXPECT_TRUE(has(page, "The doctor was not asked, or said nothing."));
    EXPECT_TRUE(has(page, "No allocation was read."));
    EXPECT_TRUE(has(page, "No page tables were read."));
}

TEST(ReportPage, SamplesAreThePlotAndTheNewestIsTheOverview)
{
    archive::Capture capture = capture_of_one_adapter();
    capture.samples[0].overview = overview_with("100");
    capture.samples[1].overview = overview_with("200");
    const std::string page = page_of(capture);
    EXPECT_TRUE(has(page, R"(points="70.0,94.0 620.0,14.0")")) << page;
    EXPECT_TRUE(has(page, R"(<th scope="row">engine clock</th><td class="number">200</td>)"));
}

TEST(ReportPage, ErrorsOfDocumentsAreToldOnce)
{
    archive::Capture capture = capture_of_one_adapter();
    const std::string error = R"({"schema": "x", "errors": [{"message": "it is <broken>"}]})";
    capture.documents = {{"dvfs", error}, {"alloc", error}};
    const std::string page = page_of(capture);
    const auto first = page.find("<li>it is &lt;broken&gt;</li>");
    ASSERT_NE(first, std::string::npos);
    EXPECT_EQ(page.find("it is &lt;broken&gt;", first + 5), std::string::npos);
}

TEST(ReportPage, HostileTextsStayTexts)
{
    archive::Capture capture = capture_of_one_adapter();
    const std::string bad = R"(\"'><script>alert(1)</script><img src=x onerror=y>\u001b[2J)";
    capture.manifest.time = "<script>";
    capture.manifest.tool = "<script>";
    capture.manifest.adapters[0].name = "<script>";
    capture.manifest.problems = {"<script>"};
    capture.manifest.errors = {{0, "/%3Cscript%3E", "EIO"}};
    capture.samples[1].overview =
        R"({"adapters": [{"bus_id": ")" + bad + R"(", "name": ")" + bad + R"(",
        "clocks": {"dvfs_level": ")" +
        bad + R"("}, "summary": {")" + bad + R"(": [")" + bad +
        R"("]}, "memory": {"segments": [{"segment": ")" + bad + R"(", "name": ")" + bad + R"("}]},
        "processes": {"devices": [{"device": ")" +
        bad + R"(", "processes": [{"pid": 1, "name": ")" + bad +
        R"("}]}], "total": {"segments": {")" + bad + R"(": 5}}}}], "foreign_gpu": {"x": ")" + bad +
        R"("}})";
    capture.documents = {
        {"version", R"({"library": {"path": ")" + bad + R"("}})"},
        {"dvfs", R"({"adapters": [{"name": ")" + bad + R"(", "fields": {")" + bad + R"(": ")" +
                     bad + R"("}}]})"},
        {"alloc",
         R"({"allocations": [{"handle": ")" + bad + R"(", "hw_format": ")" + bad + R"("}]})"},
        {"leaks",
         R"({"groups": [{"bus_id": ")" + bad + R"(", "owners": [{"device": ")" + bad + R"("}]}]})"},
        {"pagetable", R"({"processes": [{"pid": 1, "name": ")" + bad + R"(", "patches": [
            {"begin": "0x1000", "end": "0x2000", "kinds": [{"segment": ")" +
                          bad + R"("}], "allocations": [{"handle": ")" + bad + R"("}]}]}]})"},
        {"doctor", R"({"checks": [{"id": ")" + bad + R"(", "result": ")" + bad +
                       R"(", "found": ")" + bad + R"("}]})"},
    };
    const std::string page = page_of(capture);
    EXPECT_FALSE(has(page, "<script"));
    EXPECT_FALSE(has(page, "<img"));
    EXPECT_FALSE(has(page, "\x1b"));
    EXPECT_TRUE(has(page, "&lt;script&gt;alert(1)&lt;/script&gt;"));
}

TEST(ReportPage, ItRefersToNothingOutsideAndForbidsIt)
{
    const std::string page = page_of(capture_of_one_adapter());
    EXPECT_TRUE(
        has(page, R"(content="default-src 'none'; style-src 'unsafe-inline'; img-src data:")"));
    for (const char* const reference : {"http:", "https:", "src=", "url(", "@import", "<script"}) {
        EXPECT_FALSE(has(page, reference)) << reference;
    }
}

TEST(ReportPage, DocumentsOfAnyFormMakeAPage)
{
    const char* const kForms[] = {
        R"({"adapters": 1, "checks": {}, "groups": "x", "allocations": null, "processes": 2})",
        R"({"adapters": [1, null, "x", [], {}], "checks": [1, {}], "groups": [[], {}],
            "allocations": [null, {}], "processes": [3, {"patches": [0, {}]}], "errors": [7, {}]})",
        R"({"adapters": [{"bus_id": {}, "memory": [], "processes": {"devices": 1, "total":
            {"segments": [1, 2]}}, "clocks": {"engine_clock": 1e308}, "fields": [1, 2],
            "summary": [1]}, {"processes": {"total": {"segments": "x"}}, "fields": "x"}],
            "processes": [{"patches": [{"begin": "0xffffffffffffffff", "end": "0x0"},
            {"begin": "0x0", "end": "0xffffffffffffffff", "kinds": [{}]}], "patches_left_out":
            18446744073709551615}], "groups": [{"owners": [1, 2, 3, 4], "owners_left_out": -1}]})",
    };
    for (const char* const form : kForms) {
        archive::Capture capture = capture_of_one_adapter();
        for (const char* const name :
             {"version", "dvfs", "alloc", "leaks", "pagetable", "doctor"}) {
            capture.documents[name] = form;
        }
        capture.samples[0].overview = form;
        capture.samples[1].overview = form;
        EXPECT_TRUE(page_of(capture).ends_with("</html>\n")) << form;
    }
}

TEST(ReportPage, WhatIsLeftOutIsCounted)
{
    archive::Capture capture = capture_of_one_adapter();
    capture.documents = {
        {"leaks", R"({"groups": [{"owners": [{}, {}, {}, {}, {}], "owners_left_out": 7}]})"},
        {"pagetable", R"({"processes": [{"pid": 1, "name": "a", "patches": [
            {"begin": "0x1000", "end": "0x2000"}], "patches_left_out": 900}],
            "processes_left_out": 30})"},
    };
    const std::string page = page_of(capture);
    EXPECT_TRUE(has(page, "; 8 more</td>"));
    EXPECT_TRUE(has(page, "<p>1 of 901 patches are shown.</p>"));
    EXPECT_TRUE(has(page, "<p>1 of 31 address spaces are shown.</p>"));
}

// "[ELEMENT, ELEMENT, ...]"
std::string list_of(std::string_view element, int count)
{
    std::string text{"["};
    for (int i = 0; i < count; ++i) {
        text.append(i == 0 ? "" : ",").append(element);
    }
    return text + ']';
}

// {"PREFIX0": 1, "PREFIX1": 1, ...}
std::string members(const std::string& prefix, int count)
{
    std::string text{"{"};
    for (int i = 0; i < count; ++i) {
        text += (i == 0 ? "\"" : ",\"") + prefix + std::to_string(i) + "\": 1";
    }
    return text + '}';
}

TEST(ReportPage, EveryTableThatIsCutSaysHowMuch)
{
    archive::Capture capture = capture_of_one_adapter();
    const std::string adapter =
        R"({"bus_id": "0000:01:00.0", "memory": {"segments": )" + list_of("{}", 33) +
        R"(, "segments_left_out": 2}, "processes": {"total": {"segments": )" + members("s", 9) +
        R"(}}, "summary": {"modes": )" + list_of("1", 17) + "}}";
    capture.samples[1].overview =
        R"({"adapters": )" + list_of(adapter, 17) + R"(, "adapters_left_out": 3})";
    capture.documents = {
        {"leaks", R"({"groups": )" + list_of("{}", 51) + R"(, "groups_left_out": 19})"},
        {"dvfs", R"({"adapters": [{"fields": )" + members("f", 101) + "}]}"},
        {"pagetable", R"({"errors": )" + list_of("{}", 21) + "}"}};
    const std::string page = page_of(capture);
    EXPECT_TRUE(has(page, "<p>16 of 20 adapters are shown.</p>"));
    EXPECT_TRUE(has(page, "<p>32 of 35 segments are shown.</p>"));
    EXPECT_TRUE(has(page, "<p>8 of 9 segments in use are shown.</p>"));
    EXPECT_TRUE(has(page, "1, 1 and 1 more</td>"));
    EXPECT_TRUE(has(page, "<p>50 of 70 groups are shown.</p>"));
    EXPECT_TRUE(has(page, "<p>100 of 101 settings are shown.</p>"));
    EXPECT_TRUE(has(page, "<p>20 of 21 errors are shown.</p>"));
}

}  // namespace
}  // namespace nimba::smi::page
