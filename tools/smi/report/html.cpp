// SPDX-License-Identifier: MIT
#include "tools/smi/report/html.hpp"

#include "tools/smi/pagetable/svg_canvas.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <utility>

namespace nimba::smi::page {
namespace {

Html cell(std::string_view name, const Html& content, bool number, std::string_view scope)
{
    std::string attributes{scope};
    if (number) {
        attributes += attributes.empty() ? "" : " ";
        attributes += R"(class="number")";
    }
    return element(name, content, attributes);
}

}  // namespace

Html Html::text(std::string_view text)
{
    return markup(xml_text(text));
}

Html Html::markup(std::string markup)
{
    Html html;
    html.markup_ = std::move(markup);
    return html;
}

Html element(std::string_view name, const Html& content, std::string_view attributes)
{
    return Html::markup(fmt::format("<{0}{1}{2}>{3}</{0}>", name, attributes.empty() ? "" : " ",
                                    attributes, content.str()));
}

Html paragraph(std::string_view text)
{
    Html html = element("p", Html::text(text));
    html += Html::markup("\n");
    return html;
}

Html heading(std::string_view text)
{
    Html html = element("h3", Html::text(text));
    html += Html::markup("\n");
    return html;
}

Html table(std::string_view caption, const std::vector<Column>& columns,
           const std::vector<Cells>& rows)
{
    Html head;
    for (const Column& column : columns) {
        head += cell("th", Html::text(column.name), column.number, R"(scope="col")");
    }
    Html body;
    for (const Cells& cells : rows) {
        Html row;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            row += i == 0 ? cell("th", cells[i], columns[i].number, R"(scope="row")")
                          : cell("td", cells[i], columns[i].number, "");
        }
        body += element("tr", row);
        body += Html::markup("\n");
    }
    Html all = element("caption", Html::text(caption));
    all += element("thead", element("tr", head));
    all += Html::markup("\n");
    all += element("tbody", body);
    // What is wider than the window is moved with the keyboard, too.
    Html html = element("div", element("table", all),
                        fmt::format(R"(class="wide" role="region" tabindex="0" aria-label="{}")",
                                    xml_text(caption)));
    html += Html::markup("\n");
    return html;
}

Html left_out(std::size_t shown, std::size_t all, std::string_view what)
{
    return shown >= all ? Html{}
                        : paragraph(fmt::format("{} of {} {} are shown.", shown, all, what));
}

Html bar(double part)
{
    const double percent = 100 * std::clamp(part, 0.0, 1.0);
    return Html::markup(fmt::format(
        R"(<span class="bar" aria-hidden="true"><span style="width:{:.1f}%"></span></span>)",
        percent));
}

}  // namespace nimba::smi::page
