// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/svg_canvas.hpp"

#include "tools/smi/text/printable.hpp"

#include <fmt/core.h>

#include <array>

namespace nimba::smi {
namespace {

constexpr double kLetterWidth = 0.6;  // of its size
constexpr const char* kLineColour = "#444444";

// U+FFFE and U+FFFF, and what stands for them.
constexpr std::string_view kNoCharacters[] = {"\xEF\xBF\xBE", "\xEF\xBF\xBF"};
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

struct Entity {
    char character;
    std::string_view text;
};
constexpr std::array kEntities{Entity{'&', "&amp;"}, Entity{'<', "&lt;"}, Entity{'>', "&gt;"},
                               Entity{'"', "&quot;"}, Entity{'\'', "&apos;"}};

std::string_view entity_for(const char& c)
{
    for (const Entity& entity : kEntities) {
        if (entity.character == c) {
            return entity.text;
        }
    }
    return {&c, 1};
}

const char* anchor_name(SvgCanvas::Anchor anchor)
{
    switch (anchor) {
        case SvgCanvas::Anchor::kMiddle:
            return "middle";
        case SvgCanvas::Anchor::kEnd:
            return "end";
        case SvgCanvas::Anchor::kStart:
            break;
    }
    return "start";
}

}  // namespace

void SvgCanvas::rectangle(double x, double y, double width, double height, const SvgFill& fill)
{
    body_ += fmt::format(
        R"(<rect x="{:.1f}" y="{:.1f}" width="{:.2f}" height="{:.1f}" fill="{}"{} stroke="{}"/>)"
        "\n",
        x, y, width, height, fill.colour, fill.faint ? R"( fill-opacity="0.55")" : "", kLineColour);
}

void SvgCanvas::line(double x1, double y1, double x2, double y2)
{
    body_ += fmt::format(R"(<line x1="{:.1f}" y1="{:.1f}" x2="{:.1f}" y2="{:.1f}" stroke="{}"/>)"
                         "\n",
                         x1, y1, x2, y2, kLineColour);
}

void SvgCanvas::zigzag(double x1, double x2, double y)
{
    constexpr double kStep = 8;
    constexpr double kHeight = 5;
    std::string points;
    bool up = false;
    for (double x = x1; x <= x2; x += kStep, up = !up) {
        points += fmt::format("{}{:.1f},{:.1f}", points.empty() ? "" : " ", x,
                              up ? y - kHeight : y + kHeight);
    }
    body_ += fmt::format(R"(<polyline points="{}" fill="none" stroke="{}"/>)"
                         "\n",
                         points, kLineColour);
}

void SvgCanvas::text(double x, double y, std::string_view text, int size, Anchor anchor)
{
    body_ += fmt::format(R"(<text x="{:.1f}" y="{:.1f}" font-size="{}" text-anchor="{}">{}</text>)"
                         "\n",
                         x, y, size, anchor_name(anchor), xml_text(text));
}

std::string SvgCanvas::document(int height, std::string_view title) const
{
    return fmt::format(
        R"(<?xml version="1.0" encoding="UTF-8"?>
<svg xmlns="http://www.w3.org/2000/svg" width="{0}" height="{1}" viewBox="0 0 {0} {1}" font-family="monospace" fill="#111111">
<title>{2}</title>
<rect width="{0}" height="{1}" fill="#ffffff"/>
{3}</svg>
)",
        kWidth, height, xml_text(title), body_);
}

double svg_text_width(std::string_view text, int size)
{
    return static_cast<double>(columns(text)) * kLetterWidth * size;
}

std::string xml_text(std::string_view text)
{
    std::string harmless = printable(text);
    for (const std::string_view character : kNoCharacters) {
        for (auto at = harmless.find(character); at != std::string::npos;
             at = harmless.find(character, at)) {
            harmless.replace(at, character.size(), kReplacement);
        }
    }
    std::string result;
    for (const char& c : harmless) {
        result += entity_for(c);
    }
    return result;
}

}  // namespace nimba::smi
