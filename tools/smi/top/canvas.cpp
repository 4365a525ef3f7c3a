// SPDX-License-Identifier: MIT
#include "tools/smi/top/canvas.hpp"

#include "tools/smi/top/unicode.hpp"

#include <algorithm>

namespace nimba::smi::top {

Ink scale_ink(double share)
{
    constexpr int kSteps = 5;
    const int step = std::clamp(static_cast<int>(share * kSteps), 0, kSteps - 1);
    return static_cast<Ink>(static_cast<int>(Ink::kScale0) + step);
}

Canvas::Canvas(Size size)
    : size_{size},
      cells_(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height))
{
}

bool Canvas::contains(int x, int y) const
{
    return x >= 0 && x < size_.width && y >= 0 && y < size_.height;
}

Cell& Canvas::at(int x, int y)
{
    return cells_[static_cast<std::size_t>(y) * static_cast<std::size_t>(size_.width) +
                  static_cast<std::size_t>(x)];
}

const Cell& Canvas::cell(int x, int y) const
{
    return cells_[static_cast<std::size_t>(y) * static_cast<std::size_t>(size_.width) +
                  static_cast<std::size_t>(x)];
}

int Canvas::put(int x, int y, std::string_view text, Ink ink, int limit)
{
    int taken = 0;
    for (const char32_t character : characters(text)) {
        const int width = width_of(character);
        if (width == 0) {
            continue;
        }
        if (taken + width > limit || !contains(x + taken + width - 1, y)) {
            break;
        }
        put(x + taken, y, character, ink);
        if (width == 2) {
            put(x + taken + 1, y, U'\0', ink);
        }
        taken += width;
    }
    return taken;
}

void Canvas::put(int x, int y, char32_t glyph, Ink ink)
{
    if (contains(x, y)) {
        at(x, y) = {glyph, ink};
    }
}

void Canvas::dye(int x, int y, int width, Ink ink)
{
    for (int column = x; column < x + width; ++column) {
        if (contains(column, y)) {
            at(column, y).ink = ink;
        }
    }
}

void Canvas::make_ascii()
{
    for (Cell& cell : cells_) {
        cell.glyph = cell.glyph == U'\0' ? U' ' : nearest_ascii(cell.glyph);
    }
}

std::string Canvas::row(int y) const
{
    std::string text;
    for (int x = 0; x < size_.width; ++x) {
        const char32_t glyph = cell(x, y).glyph;
        if (glyph != U'\0') {
            append_utf8(text, glyph);
        }
    }
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

void draw_frame(Canvas& canvas, const Area& area)
{
    const int right = area.x + area.width - 1;
    const int bottom = area.y + area.height - 1;
    for (int x = area.x + 1; x < right; ++x) {
        canvas.put(x, area.y, U'─', Ink::kFrame);
        canvas.put(x, bottom, U'─', Ink::kFrame);
    }
    for (int y = area.y + 1; y < bottom; ++y) {
        canvas.put(area.x, y, U'│', Ink::kFrame);
        canvas.put(right, y, U'│', Ink::kFrame);
    }
    canvas.put(area.x, area.y, U'╭', Ink::kFrame);
    canvas.put(right, area.y, U'╮', Ink::kFrame);
    canvas.put(area.x, bottom, U'╰', Ink::kFrame);
    canvas.put(right, bottom, U'╯', Ink::kFrame);
}

}  // namespace nimba::smi::top
