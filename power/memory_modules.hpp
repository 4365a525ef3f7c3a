// SPDX-License-Identifier: MIT
// The modules of the system's memory, in what "dmidecode -t memory" writes.
#pragma once

#include "core/line_pieces.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace nimba {

using MemoryLines = LinePieces<1023>;

// Modules are found one after the other: a line with its width, then one with its mark, a
// hexadecimal number. Other lines, marks before a width among them, do not count.
class MemoryModules final {
  public:
    // A mark's line has both words; the mark stands behind the second.
    MemoryModules(const char* word, const char* before) : word_{word}, before_{before} {}

    // Takes the next lines of the text. Returns whether more are of use: eight modules are enough.
    bool take(std::string_view lines);

    [[nodiscard]] std::size_t count() const { return count_; }
    // 0 where there is none. A width without a mark stands behind those of the modules.
    [[nodiscard]] uint32_t width(std::size_t index) const { return widths_[index]; }
    [[nodiscard]] unsigned mark(std::size_t index) const { return marks_[index]; }

  private:
    static constexpr std::size_t kMost = 8;

    void take_line(const std::string& line);

    const char* word_;
    const char* before_;
    bool has_width_ = false;
    std::size_t count_ = 0;
    std::array<uint32_t, kMost> widths_{};
    std::array<unsigned, kMost> marks_{};
};

// Bits of all modules together, as far as two or four of them, whose marks are channels, tell; else
// of the first. 0: there is none.
int32_t memory_width(const MemoryModules& modules);

// 4 or 5: the mark of the first module; 4 when it is another, or there is none.
int32_t ddr_generation(const MemoryModules& modules);

}  // namespace nimba
