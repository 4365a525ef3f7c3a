// SPDX-License-Identifier: MIT
// A picture of characters, which whoever owns a terminal shows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace nimba::smi::top {

// What a character is for; the terminal decides how that looks.
enum class Ink : uint8_t {
    kPlain,
    kDim,       // that is there but matters less, or is old
    kFrame,     // lines around something
    kTitle,     // what names something
    kKey,       // a key to press
    kHead,      // the line above the columns of a table
    kSorted,    // the column that a table is sorted by
    kSelected,  // the row that is chosen
    kTab,       // an adapter that is not shown
    kTabHere,   // the adapter that is shown
    kWarning,
    kBad,
    kScale0,  // a share, from little to much
    kScale1,
    kScale2,
    kScale3,
    kScale4,
    kMemory,
    kFrames,
    kClock,
};
inline constexpr std::size_t kInks = static_cast<std::size_t>(Ink::kClock) + 1;

// The ink for a share from 0 to 1.
Ink scale_ink(double share);

struct Cell {
    char32_t glyph = U' ';  // 0 in the second column of a wide character
    Ink ink = Ink::kPlain;

    bool operator==(const Cell&) const = default;
};

struct Size {
    int width = 0;
    int height = 0;

    bool operator==(const Size&) const = default;
};

// A rectangle of a canvas.
struct Area {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool operator==(const Area&) const = default;
};

class Canvas final {
  public:
    explicit Canvas(Size size);

    [[nodiscard]] Size size() const { return size_; }
    [[nodiscard]] const Cell& cell(int x, int y) const;

    // Writes a text of UTF-8 from a place on, at most `limit` columns and not beyond the border; a
    // character that is not whole there is left out. Returns the columns that it took.
    int put(int x, int y, std::string_view text, Ink ink, int limit);
    int put(int x, int y, std::string_view text, Ink ink)
    {
        return put(x, y, text, ink, size_.width);
    }
    void put(int x, int y, char32_t glyph, Ink ink);

    // Gives all characters of a row of cells another ink.
    void dye(int x, int y, int width, Ink ink);

    // Puts ASCII in place of every other character.
    void make_ascii();

    // A row as UTF-8, without the blanks at its end.
    [[nodiscard]] std::string row(int y) const;

  private:
    [[nodiscard]] bool contains(int x, int y) const;
    Cell& at(int x, int y);

    Size size_;
    std::vector<Cell> cells_;
};

// A frame along the border of an area.
void draw_frame(Canvas& canvas, const Area& area);

}  // namespace nimba::smi::top
