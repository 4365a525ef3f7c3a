// SPDX-License-Identifier: MIT
#include "pagetable/dump_line.hpp"

#include "core/plain_number.hpp"
#include "nimba_mgmt_interface.h"

#include <algorithm>
#include <cstring>

namespace nimba {
namespace {

constexpr std::size_t kNone = std::string_view::npos;

constexpr std::string_view kEntry = "entry";
constexpr std::string_view kLargePage = "LargePage";

// Throws what std::stoi throws.
int32_t decimal(std::string_view text)
{
    return std::stoi(std::string{text});
}

// What is between two positions; the second may be kNone.
std::string_view between(std::string_view text, std::size_t begin, std::size_t end)
{
    return text.substr(begin, end == kNone ? kNone : end - begin);
}

// What is behind the first occurrence of the key.
std::optional<std::string_view> behind(std::string_view line, std::string_view key)
{
    const std::size_t position = line.find(key);
    return position == kNone ? std::nullopt : std::optional{line.substr(position + key.size())};
}

int32_t level_in(std::string_view line)
{
    const std::size_t colon = line.find(':');
    return colon == kNone ? -1 : decimal(line.substr(0, colon));
}

// The number behind the first ":" and before the next `end`.
int32_t index_in(std::string_view line, char end)
{
    const std::size_t colon = line.find(':');
    return colon == kNone ? 0 : decimal(between(line, colon + 1, line.find(end, colon + 1)));
}

int32_t value_in(std::string_view line, std::string_view key)
{
    const auto text = behind(line, key);
    return text ? decimal(between(*text, 0, text->find(' '))) : 0;
}

std::string_view text_up_to_comma(std::string_view line, std::string_view key)
{
    const auto text = behind(line, key);
    return text ? between(*text, 0, text->find(',')) : std::string_view{};
}

std::string_view text_to_the_end(std::string_view line, std::string_view key)
{
    return without_trailing_blanks(behind(line, key).value_or(std::string_view{}));
}

bool is_page_table_line(std::string_view line)
{
    return line.find(kEntry) != kNone;
}

// Reads a plain line from its beginning on. Nothing is looked at behind what does not fit.
class PlainLine final {
  public:
    explicit PlainLine(const char* text) : begin_{text}, at_{text} {}

    // A number of up to 7 digits.
    bool take(int32_t& number)
    {
        const uint32_t first = digit_at(at_);
        if (first <= 9 && digit_at(at_ + 1) > 9) {  // as most are: where it ends is foreseen
            number = static_cast<int32_t>(first);
            ++at_;
            return true;
        }
        const uint64_t characters = load_eight(at_);
        const std::size_t count = leading_digits(characters);
        if (count == 0 || count == 8) {
            return false;
        }
        number = static_cast<int32_t>(value_of_digits(characters, count));
        at_ += count;
        return true;
    }

    template <std::size_t size>
    bool take(const char (&text)[size])
    {
        if (std::memcmp(at_, text, size - 1) != 0) {
            return false;
        }
        at_ += size - 1;
        return true;
    }

    // Up to 16 hexadecimal digits.
    bool take_address(std::string_view& address)
    {
        const char* const first = at_;
        while (at_ < first + 16 && kHexadecimalDigits[static_cast<unsigned char>(*at_)] < 16) {
            ++at_;
        }
        address = {first, static_cast<std::size_t>(at_ - first)};
        return at_ != first;
    }

    [[nodiscard]] std::size_t length() const { return static_cast<std::size_t>(at_ - begin_); }

  private:
    // Above 9 when it is none.
    static uint32_t digit_at(const char* at)
    {
        return static_cast<unsigned char>(*at) - uint32_t{'0'};
    }

    const char* begin_;
    const char* at_;
};

}  // namespace

std::string_view without_trailing_blanks(std::string_view text)
{
    return text.substr(0, text.find_last_not_of(" \n\r\t") + 1);
}

std::string_view process_id_in(std::string_view line)
{
    return text_to_the_end(line, "pid = ");
}

LineKind kind_of(std::string_view line)
{
    if (is_page_table_line(line)) {
        return LineKind::kPageTable;
    }
    return line.find("Snoop") != kNone ? LineKind::kSubTable : LineKind::kOther;
}

PageTableLine parse_page_table_line(std::string_view line)
{
    PageTableLine fields;
    fields.level = level_in(line);
    fields.index = index_in(line, ':');
    fields.address = text_up_to_comma(line, "addr:");
    fields.buffer = text_to_the_end(line, "buffer:");
    return fields;
}

SubTableLine parse_sub_table_line(std::string_view line)
{
    SubTableLine fields;
    fields.level = level_in(line);
    fields.index = index_in(line, ' ');
    fields.snoop = value_in(line, "Snoop:");
    fields.segment = value_in(line, "Segment:");
    if (line.find(kLargePage) != kNone) {
        fields.large_page = value_in(line, "LargePage:");
    }
    fields.address = text_to_the_end(line, "Addr:");
    return fields;
}

std::size_t parse_plain_sub_table_line(const char* text, SubTableLine& fields)
{
    PlainLine line{text};
    int32_t large_page = 0;
    const bool is_plain =
        line.take(fields.level) && line.take(":") && line.take(fields.index) &&
        line.take(" Snoop:") && line.take(fields.snoop) && line.take(" Segment:") &&
        line.take(fields.segment) && line.take(" LargePage:") && line.take(large_page) &&
        line.take(" Addr:") && line.take_address(fields.address) && line.take("\n");
    fields.large_page = large_page;
    return is_plain ? line.length() : 0;
}

}  // namespace nimba

std::string find_Pid_number(const std::string& line)
{
    return std::string{nimba::process_id_in(line)};
}

int32_t find_Level_in_Table(const std::string& line)
{
    return nimba::level_in(line);
}

int32_t find_Index_in_Table(const std::string& line)
{
    return nimba::index_in(line, nimba::is_page_table_line(line) ? ':' : ' ');
}

int32_t find_value_in_subTable(const std::string& line, const std::string& key)
{
    return nimba::value_in(line, key);
}

std::string find_Addr_in_Table(const std::string& line, const std::string& key)
{
    return std::string{key == "addr:" ? nimba::text_up_to_comma(line, key)
                                      : nimba::text_to_the_end(line, key)};
}

std::string find_Buffer_in_Table(const std::string& line, const std::string& key)
{
    return std::string{nimba::text_to_the_end(line, key)};
}
