// SPDX-License-Identifier: MIT
// The HTML of a page. Texts come into it escaped, whatever their bytes.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace nimba::smi::page {

class Html final {
  public:
    Html() = default;

    // A text from anywhere: what has a meaning in HTML as entities, control characters written out,
    // and U+FFFD for what is no UTF-8.
    static Html text(std::string_view text);

    // What is HTML already: only what this program itself wrote.
    static Html markup(std::string markup);

    Html& operator+=(const Html& more)
    {
        markup_ += more.markup_;
        return *this;
    }

    [[nodiscard]] bool empty() const { return markup_.empty(); }
    [[nodiscard]] const std::string& str() const { return markup_; }

  private:
    std::string markup_;
};

// <name attributes>content</name>; the attributes are HTML.
Html element(std::string_view name, const Html& content, std::string_view attributes = "");

Html paragraph(std::string_view text);

// A heading of level 3, within a section.
Html heading(std::string_view text);

struct Column {
    std::string name;
    bool number = false;
};

using Cells = std::vector<Html>;

// The first cell of a row is its heading. `caption` says what the table shows.
Html table(std::string_view caption, const std::vector<Column>& columns,
           const std::vector<Cells>& rows);

// "50 of 1000 groups are shown."; nothing when all are.
Html left_out(std::size_t shown, std::size_t all, std::string_view what);

// A bar for a part of a whole; the numbers stand beside it.
Html bar(double part);

}  // namespace nimba::smi::page
