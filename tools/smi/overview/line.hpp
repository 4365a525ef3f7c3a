// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/overview/style.hpp"
#include "tools/smi/text/colour.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace nimba::smi {

// A line as it grows. It never gets wider than it may: what is too long is cut.
class Line final {
  public:
    // `most`: columns.
    Line(const OverviewStyle& style, std::size_t most) : style_{&style}, most_{most} {}

    // Up to where it may go from now on.
    Line& limit(std::size_t most)
    {
        most_ = most;
        return *this;
    }

    // Adds a text, made printable.
    Line& add(std::string_view text, Colour colour = Colour::kNone);

    // Adds blanks up to a column.
    Line& fill_to(std::size_t column);

    // Adds a rule up to a column, behind a blank unless the line is empty.
    Line& rule_to(std::size_t column);

    // Adds a bar of this width, in the colour of its load.
    Line& bar(uint64_t part, uint64_t whole, std::size_t width, Colour colour);

    [[nodiscard]] std::size_t columns() const { return columns_; }

    // The line, without blanks at its end and with a newline.
    [[nodiscard]] std::string text() const;

  private:
    void append(std::string_view character, std::size_t times, Colour colour);

    const OverviewStyle* style_;
    std::size_t most_;
    std::string text_;
    std::size_t columns_ = 0;
};

}  // namespace nimba::smi
