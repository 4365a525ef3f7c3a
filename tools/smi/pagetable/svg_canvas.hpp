// SPDX-License-Identifier: MIT
// Shapes and texts of an SVG picture, from top to bottom.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace nimba::smi {

struct SvgFill {
    std::string_view colour;
    bool faint = false;
};

class SvgCanvas final {
  public:
    enum class Anchor : uint8_t { kStart, kMiddle, kEnd };

    // The picture's own size.
    static constexpr int kWidth = 1040;

    void rectangle(double x, double y, double width, double height, const SvgFill& fill);
    void line(double x1, double y1, double x2, double y2);
    void zigzag(double x1, double x2, double y);

    // `size`: of the letters, in pixels; a letter is six tenths as wide.
    void text(double x, double y, std::string_view text, int size = 13,
              Anchor anchor = Anchor::kStart);

    // The document, `height` pixels high. `title` is its title for programs.
    [[nodiscard]] std::string document(int height, std::string_view title) const;

  private:
    std::string body_;
};

// Pixels that a text takes.
double svg_text_width(std::string_view text, int size = 13);

// Text within XML: the characters that have a meaning there as entities, control characters written
// out, and those that no XML text may have replaced.
std::string xml_text(std::string_view text);

}  // namespace nimba::smi
