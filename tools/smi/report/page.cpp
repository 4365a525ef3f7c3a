// SPDX-License-Identifier: MIT
#include "tools/smi/report/page.hpp"

#include "tools/smi/report/html.hpp"
#include "tools/smi/report/sections.hpp"
#include "tools/smi/report/style.hpp"

#include <fmt/core.h>

namespace nimba::smi::page {
namespace {

struct Section {
    const char* id;
    const char* title;
    Html (*body)(const Content& content);
};

constexpr Section kSections[] = {
    {"overview", "Overview", overview_section},
    {"findings", "What the doctor found", findings_section},
    {"unread", "What could not be read", unread_section},
    {"clocks", "Clocks, sensors and DVFS", clocks_section},
    {"memory", "Memory by segment and process", memory_section},
    {"allocations", "Largest allocations", allocations_section},
    {"leaks", "Leak groups", leaks_section},
    {"page-tables", "Page tables", page_tables_section},
    {"summary", "Summaries", summary_section},
};

Html contents()
{
    Html items;
    for (const Section& section : kSections) {
        items += element("li", element("a", Html::text(section.title),
                                       fmt::format(R"(href="#{}")", section.id)));
        items += Html::markup("\n");
    }
    return element("nav", element("ul", items), R"(aria-label="Sections")");
}

}  // namespace

std::string page_html(const Content& content)
{
    const Html title = Html::text("Graphics report, " + content.time);
    Html heading = Html::text("Graphics report, ");
    heading += element("span", Html::text(content.time), R"(class="whole")");
    Html main;
    for (const Section& section : kSections) {
        Html body = element("h2", Html::text(section.title));
        body += Html::markup("\n");
        body += section.body(content);
        main += element("section", body, fmt::format(R"(id="{}")", section.id));
        main += Html::markup("\n");
    }
    // The policy holds even if something should ever get past the escaping.
    return fmt::format(R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'; img-src data:">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="generator" content="nimba-smi {}">
<link rel="icon" href="data:,">
<title>{}</title>
<style>{}</style>
</head>
<body>
<header>
<h1>{}</h1>
{}
</header>
<main>
{}</main>
</body>
</html>
)",
                       Html::text(content.tool).str(), title.str(), kStyle, heading.str(),
                       contents().str(), main.str());
}

}  // namespace nimba::smi::page
