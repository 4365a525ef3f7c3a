// SPDX-License-Identifier: MIT
#include "tools/smi/overview/line.hpp"

#include "tools/smi/text/bar.hpp"
#include "tools/smi/text/printable.hpp"

namespace nimba::smi {

Line& Line::add(std::string_view text, Colour colour)
{
    const std::string shown =
        cut(printable(text), most_ - columns_, style_->utf8 ? "\xE2\x80\xA6" : "...");
    text_ += coloured(shown, colour, style_->colours && !shown.empty());
    columns_ += smi::columns(shown);
    return *this;
}

Line& Line::fill_to(std::size_t column)
{
    append(" ", column > columns_ ? column - columns_ : 0, Colour::kNone);
    return *this;
}

Line& Line::rule_to(std::size_t column)
{
    if (columns_ > 0) {
        add(" ");
    }
    append(style_->utf8 ? "\xE2\x94\x80" : "-", column > columns_ ? column - columns_ : 0,
           Colour::kGrey);
    return *this;
}

Line& Line::bar(uint64_t part, uint64_t whole, std::size_t width, Colour colour)
{
    const std::size_t length = bar_length(part, whole, width);
    append(style_->utf8 ? "\xE2\x96\x88" : "#", length, colour);
    append(style_->utf8 ? "\xE2\x96\x91" : ".", width - length, Colour::kGrey);
    return *this;
}

std::string Line::text() const
{
    return text_.substr(0, text_.find_last_not_of(' ') + 1) + '\n';
}

void Line::append(std::string_view character, std::size_t times, Colour colour)
{
    std::string text;
    for (std::size_t i = 0; i < times; ++i) {
        text += character;
    }
    add(text, colour);
}

}  // namespace nimba::smi
