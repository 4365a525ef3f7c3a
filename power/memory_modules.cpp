// SPDX-License-Identifier: MIT
#include "power/memory_modules.hpp"

#include "core/line_buffer.hpp"
#include "core/scan_text.hpp"

#include <array>
#include <cstddef>
#include <string>

namespace nimba {
namespace {

constexpr std::size_t kLongestLine = 1023;
constexpr std::size_t kMostModules = 8;

struct Modules {
    std::size_t count = 0;  // that are complete
    std::array<int, kMostModules> widths{};
    std::array<unsigned, kMostModules> marks{};  // what the line that completes each tells
};

// A module is complete with a line that has both words, of which the second stands before a
// hexadecimal mark. Other lines with them, before its width or after its end, do not count.
struct Mark {
    const char* word;
    const char* before;
};

bool has(const std::string& line, const char* word)
{
    return line.find(word) != std::string::npos;
}

const char* behind(const std::string& line, std::string_view word)
{
    return line.c_str() + line.find(word) + word.size();
}

bool is_width(const std::string& line)
{
    return has(line, "bits") && has(line, "Total") && has(line, "Width:");
}

Modules find_modules(std::string_view text, Mark mark)
{
    Modules modules;
    bool has_width = false;
    while (!text.empty() && modules.count < kMostModules) {
        const std::string_view piece = first_line(text, kLongestLine);
        text.remove_prefix(piece.size());
        const std::string line{text_of(piece)};
        if (is_width(line)) {
            scan_text(behind(line, "Width:"), " %d", &modules.widths[modules.count]);
            has_width = true;
        } else if (has_width && has(line, mark.word) && has(line, mark.before)) {
            scan_text(behind(line, mark.before), " %x", &modules.marks[modules.count]);
            ++modules.count;
            has_width = false;
        }
    }
    return modules;
}

// Widths are whatever the text says; sums wrap.
int32_t times_two(uint32_t width)
{
    return static_cast<int32_t>(width * 2U);
}

}  // namespace

int32_t memory_width(std::string_view text)
{
    const auto [count, widths, channels] = find_modules(text, {"Bank", "CHANNEL"});
    if (count == 2 && channels[0] != channels[1] && widths[1] == widths[0]) {
        return times_two(static_cast<uint32_t>(widths[0]));
    }
    if (count == 4 && widths[2] == widths[0] && widths[3] == widths[1]) {
        return times_two(static_cast<uint32_t>(widths[0]) + static_cast<uint32_t>(widths[1]));
    }
    return widths[0];
}

int32_t ddr_generation(std::string_view text)
{
    const Modules modules = find_modules(text, {"Type", "DDR"});
    return modules.count > 0 && modules.marks[0] == 5 ? 5 : 4;
}

}  // namespace nimba
