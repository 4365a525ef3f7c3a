// SPDX-License-Identifier: MIT
#include "power/memory_modules.hpp"

#include "core/scan_text.hpp"

namespace nimba {
namespace {

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

}  // namespace

bool MemoryModules::take(std::string_view lines)
{
    while (!lines.empty() && count_ < kMost) {
        const std::string_view line = MemoryLines::first(lines);
        take_line(std::string{text_of(line)});
        lines.remove_prefix(line.size());
    }
    return count_ < kMost;
}

void MemoryModules::take_line(const std::string& line)
{
    if (is_width(line)) {
        auto width = static_cast<int>(widths_[count_]);
        scan_text(behind(line, "Width:"), " %d", &width);
        widths_[count_] = static_cast<uint32_t>(width);
        has_width_ = true;
    } else if (has_width_ && has(line, word_) && has(line, before_)) {
        scan_text(behind(line, before_), " %x", &marks_[count_]);
        ++count_;
        has_width_ = false;
    }
}

int32_t memory_width(const MemoryModules& modules)
{
    // Widths are whatever the text says; sums wrap.
    uint32_t width = modules.width(0);
    if (modules.count() == 2 && modules.mark(0) != modules.mark(1) &&
        modules.width(1) == modules.width(0)) {
        width *= 2;
    } else if (modules.count() == 4 && modules.width(2) == modules.width(0) &&
               modules.width(3) == modules.width(1)) {
        width = (width + modules.width(1)) * 2;
    }
    return static_cast<int32_t>(width);
}

int32_t ddr_generation(const MemoryModules& modules)
{
    return modules.mark(0) == 5 ? 5 : 4;
}

}  // namespace nimba
