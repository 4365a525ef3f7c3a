// SPDX-License-Identifier: MIT
#include "tools/smi/report/sections.hpp"
#include "tools/smi/report/value.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace nimba::smi::page {
namespace {

constexpr std::size_t kMostChecks = 200;
constexpr std::size_t kMostLines = 200;

// A mark that does not rest on its colour alone.
Html result_html(const Document& result)
{
    const std::string text = text_of(result);
    const char* const kind = text == "ok"     ? "good"
                             : text == "fail" ? "bad"
                             : text == "note" ? "fair"
                                              : "plain";
    return element("span", Html::text(text), fmt::format(R"(class="mark {}")", kind));
}

bool is_ok(const Document& check)
{
    return text_of(member(check, {"result"})) == "ok";
}

// Few columns, so that a narrow window shows them all.
Cells check_row(const Document& check)
{
    const Document& adapter = member(check, {"adapter"});
    Html name = Html::text(text_of(member(check, {"id"})) + ' ');
    name += element("span",
                    Html::text(text_of(adapter.is_string() ? adapter : member(check, {"group"}))),
                    R"(class="of")");
    Html found = Html::text(text_of(member(check, {"found"})));
    if (const Document& remedy = member(check, {"remedy"}); remedy.is_string()) {
        found += paragraph("Remedy: " + text_of(remedy));
    }
    return {std::move(name), result_html(member(check, {"result"})), std::move(found)};
}

}  // namespace

Html findings_section(const Content& content)
{
    std::vector<const Document*> checks;
    for (const Document& check : list(content.document(kDoctor), {"checks"})) {
        checks.push_back(&check);
    }
    if (checks.empty()) {
        return paragraph("The doctor was not asked, or said nothing.");
    }
    // What needs somebody comes first.
    const auto good = std::stable_partition(checks.begin(), checks.end(),
                                            [](const Document* check) { return !is_ok(*check); });
    const auto bad = static_cast<std::size_t>(good - checks.begin());
    std::vector<Cells> rows;
    for (const Document* const check : checks) {
        if (rows.size() < kMostChecks) {
            rows.push_back(check_row(*check));
        }
    }
    Html html = paragraph(
        bad == 0 ? fmt::format("All {} checks are ok.", checks.size())
                 : fmt::format("{} of {} checks are not ok; they come first.", bad, checks.size()));
    html += table("Checks of nimba-smi doctor", {{"Check"}, {"Result"}, {"Found"}}, rows);
    html += left_out(rows.size(), whole_size(content.document(kDoctor), "checks"), "checks");
    return html;
}

Html unread_section(const Content& content)
{
    if (content.problems.empty() && content.unread.empty()) {
        return paragraph("Everything could be read.");
    }
    Html items;
    for (std::size_t i = 0; i < std::min(content.problems.size(), kMostLines); ++i) {
        items += element("li", Html::text(content.problems[i]));
        items += Html::markup("\n");
    }
    Html html = items.empty() ? Html{} : element("ul", items);
    html += left_out(kMostLines, content.problems.size(), "problems");
    if (content.unread.empty()) {
        return html;
    }
    std::vector<Cells> rows;
    for (const UnreadNode& node : content.unread) {
        if (rows.size() < kMostLines) {
            rows.push_back({Html::text(node.path), Html::text(node.error),
                            Html::text(std::to_string(node.sample))});
        }
    }
    html += table("Nodes that the capture could not read", {{"Node"}, {"Error"}, {"Sample", true}},
                  rows);
    html += left_out(rows.size(), content.unread.size(), "nodes");
    return html;
}

}  // namespace nimba::smi::page
