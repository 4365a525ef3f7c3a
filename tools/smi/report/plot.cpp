// SPDX-License-Identifier: MIT
#include "tools/smi/report/plot.hpp"

#include "tools/smi/pagetable/svg_canvas.hpp"
#include "tools/smi/top/plot.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace nimba::smi::page {
namespace {

constexpr double kWidth = 640;
constexpr double kHeight = 200;
constexpr double kLeft = 70;
constexpr double kRight = kWidth - 20;
constexpr double kTop = 14;
constexpr double kBottom = kHeight - 26;
constexpr std::size_t kColumns = 280;  // of the picture
constexpr std::size_t kStyles = 6;     // of lines
constexpr double kGreatest = 1e300;    // of a scale

std::string number_text(double number, std::string_view unit)
{
    return fmt::format("{:.4g}{}{}", number, unit.empty() ? "" : " ", unit);
}

struct Point {
    double x = 0.0;
    double y = 0.0;
};

// Draws the lines of one plot.
class Painter final {
  public:
    explicit Painter(const Plot& plot) : plot_{plot}
    {
        double largest = 0;
        for (const Line& line : plot.lines) {
            for (const auto& value : line.values) {
                largest = std::max(largest, value.value_or(0));
            }
        }
        end_ = top::scale_end(std::min(largest, kGreatest));
    }

    std::string picture()
    {
        axes();
        for (std::size_t i = 0; i < plot_.lines.size(); ++i) {
            style_ = i % kStyles;
            draw(plot_.lines[i]);
        }
        const std::string title = xml_text(plot_.title);
        return fmt::format(
            R"(<svg class="plot" viewBox="0 0 {} {}" role="img" aria-label="{}"><title>{}</title>)"
            "\n{}</svg>\n",
            kWidth, kHeight, title, title, body_);
    }

  private:
    [[nodiscard]] Point place(std::size_t sample, double value) const
    {
        const double first = plot_.seconds.front();
        const double passed = (plot_.seconds[sample] - first) / (plot_.seconds.back() - first);
        const double part = std::clamp(value / end_, 0.0, 1.0);
        return {kLeft + passed * (kRight - kLeft), kBottom - part * (kBottom - kTop)};
    }

    void axes()
    {
        constexpr int kTicks = 2;
        for (int tick = 0; tick <= kTicks; ++tick) {
            const double part = static_cast<double>(tick) / kTicks;
            const double y = kBottom - part * (kBottom - kTop);
            body_ +=
                fmt::format(R"(<line class="grid" x1="{0}" x2="{1}" y1="{2:.1f}" y2="{2:.1f}"/>)",
                            kLeft, kRight, y);
            body_ += fmt::format(R"(<text x="{}" y="{:.1f}" text-anchor="end">{}</text>)"
                                 "\n",
                                 kLeft - 6, y + 4, xml_text(number_text(end_ * part, plot_.unit)));
        }
        const double passed = plot_.seconds.back() - plot_.seconds.front();
        body_ += fmt::format(R"(<text x="{}" y="{}">0 s</text>)", kLeft, kHeight - 8);
        body_ += fmt::format(R"(<text x="{}" y="{}" text-anchor="end">{}</text>)"
                             "\n",
                             kRight, kHeight - 8, number_text(passed, "s"));
    }

    void draw(const Line& line)
    {
        const std::size_t step = (line.values.size() + kColumns - 1) / kColumns;
        for (std::size_t begin = 0; begin < line.values.size(); begin += step) {
            draw_column(line, begin, std::min(begin + step, line.values.size()));
        }
        end_stroke();
    }

    // The least and the greatest of some samples that follow each other, in their order.
    void draw_column(const Line& line, std::size_t begin, std::size_t end)
    {
        std::optional<std::size_t> least;
        std::optional<std::size_t> greatest;
        for (std::size_t i = begin; i < end; ++i) {
            if (!line.values[i]) {
                continue;
            }
            least = !least || *line.values[i] < *line.values[*least] ? i : *least;
            greatest = !greatest || *line.values[i] > *line.values[*greatest] ? i : *greatest;
        }
        if (!least) {
            end_stroke();
            return;
        }
        const auto [first, second] = std::minmax(*least, *greatest);
        stroke_.push_back(place(first, *line.values[first]));
        if (second != first) {
            stroke_.push_back(place(second, *line.values[second]));
        }
    }

    void end_stroke()
    {
        if (stroke_.size() == 1) {
            body_ += fmt::format(R"(<circle class="dot{}" cx="{:.1f}" cy="{:.1f}" r="2"/>)"
                                 "\n",
                                 style_, stroke_.front().x, stroke_.front().y);
        } else if (!stroke_.empty()) {
            std::string points;
            for (const Point& point : stroke_) {
                points +=
                    fmt::format("{}{:.1f},{:.1f}", points.empty() ? "" : " ", point.x, point.y);
            }
            body_ += fmt::format(R"(<polyline class="line line{}" points="{}"/>)"
                                 "\n",
                                 style_, points);
        }
        stroke_.clear();
    }

    const Plot& plot_;
    double end_ = 0.0;  // of the scale of values
    std::size_t style_ = 0;
    std::vector<Point> stroke_;  // since the last gap
    std::string body_;
};

bool has_value(const Line& line)
{
    return std::ranges::any_of(line.values, [](const auto& value) { return value.has_value(); });
}

// A piece of the line as it is drawn, and its name.
Html legend(std::size_t number, std::string_view name)
{
    Html html =
        Html::markup(fmt::format(R"(<svg class="key" viewBox="0 0 30 10" aria-hidden="true">)"
                                 R"(<polyline class="line line{}" points="0,5 30,5"/></svg> )",
                                 number % kStyles));
    html += Html::text(name);
    return html;
}

Html legend_table(const Plot& plot)
{
    std::vector<Cells> rows;
    for (std::size_t i = 0; i < plot.lines.size(); ++i) {
        std::vector<double> known;
        for (const auto& value : plot.lines[i].values) {
            if (value) {
                known.push_back(*value);
            }
        }
        const auto [least, greatest] = std::ranges::minmax(known);
        rows.push_back({legend(i, plot.lines[i].name), Html::text(number_text(least, plot.unit)),
                        Html::text(number_text(greatest, plot.unit)),
                        Html::text(number_text(known.back(), plot.unit))});
    }
    return table(plot.title, {{"Line"}, {"Least", true}, {"Greatest", true}, {"Last", true}}, rows);
}

}  // namespace

Html plot_html(const Plot& plot)
{
    Plot drawn{plot};
    std::erase_if(drawn.lines, [](const Line& line) { return !has_value(line); });
    if (drawn.lines.empty() || drawn.seconds.back() <= drawn.seconds.front()) {
        return {};
    }
    Html content = element("figcaption", Html::text(drawn.title));
    content += Html::markup(Painter{drawn}.picture());
    content += legend_table(drawn);
    return element("figure", content);
}

}  // namespace nimba::smi::page
