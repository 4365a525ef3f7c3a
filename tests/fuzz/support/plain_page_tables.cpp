// SPDX-License-Identifier: MIT
#include "fuzz/support/plain_page_tables.hpp"

#include "fuzz/support/input.hpp"

#include <algorithm>

namespace nimba::fuzz {
namespace {

constexpr std::size_t kLongestLine = 511;
constexpr std::size_t kLongestText = 47;
constexpr std::size_t kNone = std::string::npos;

std::string without_blanks_behind(const std::string& text)
{
    return text.substr(0, text.find_last_not_of(" \n\r\t") + 1);
}

std::string behind(const std::string& line, const std::string& key)
{
    const std::size_t position = line.find(key);
    return position == kNone ? "" : line.substr(position + key.size());
}

// Converts a number unless one before it failed.
void convert(const std::string& text, int32_t& number, Outcome& outcome)
{
    if (outcome == Outcome::kDone) {
        outcome = to_int(text, 10, number);
    }
}

void convert_value(const std::string& line, const std::string& key, int32_t& number,
                   Outcome& outcome)
{
    if (line.find(key) != kNone) {
        const std::string text = behind(line, key);
        convert(text.substr(0, text.find(' ')), number, outcome);
    }
}

// Level and index, the latter up to `end`. A line without ":" has the level -1.
void convert_place(const std::string& line, char end, int32_t& level, int32_t& index,
                   Outcome& outcome)
{
    level = -1;
    const std::size_t colon = line.find(':');
    if (colon != kNone) {
        const std::string rest = line.substr(colon + 1);
        convert(line.substr(0, colon), level, outcome);
        convert(rest.substr(0, rest.find(end)), index, outcome);
    }
}

class PlainBuilder final {
  public:
    explicit PlainBuilder(PlainTree& tree) : tree_{tree} {}

    Outcome add(const std::string& line)
    {
        if (line.find("entry") != kNone) {
            return add_page_table(line);
        }
        return line.find("Snoop") != kNone ? add_sub_table(line) : Outcome::kDone;
    }

  private:
    Outcome add_page_table(const std::string& line)
    {
        int32_t level = 0;
        PlainPageTable entry;
        Outcome outcome = Outcome::kDone;
        convert_place(line, ':', level, entry.index, outcome);
        if (outcome != Outcome::kDone) {
            return outcome;
        }
        const std::string address = behind(line, "addr:");
        entry.address = address.substr(0, address.find(',')).substr(0, kLongestText);
        entry.buffer = without_blanks_behind(behind(line, "buffer:")).substr(0, kLongestText);
        last_was_sub_table_ = false;
        if (level >= 0 && level < static_cast<int32_t>(kPlainLevels)) {
            append(static_cast<std::size_t>(level), entry);
            last_level_ = level;
        }
        return outcome;
    }

    void append(std::size_t level, PlainPageTable& entry)
    {
        const bool is_child = level > 0 && last_level_ == static_cast<int32_t>(level) - 1;
        const bool is_sibling = level > 0 && last_level_ >= static_cast<int32_t>(level);
        if (level > 0 && !is_child && !is_sibling) {
            return;
        }
        auto& entries = tree_.page_tables[level];
        if (is_child && !tree_.page_tables[level - 1].empty()) {
            entry.parent = tree_.page_tables[level - 1].size() - 1;
            tree_.page_tables[level - 1].back().child = entries.size();
        }
        if (is_sibling && !entries.empty()) {
            entry.previous = entries.size() - 1;
            entries.back().next = entries.size();
        }
        entries.push_back(entry);
    }

    Outcome add_sub_table(const std::string& line)
    {
        int32_t level = 0;
        int32_t snoop = 0;
        int32_t segment = 0;
        int32_t large_page = 0;
        PlainSubTable entry;
        Outcome outcome = Outcome::kDone;
        convert_place(line, ' ', level, entry.index, outcome);
        convert_value(line, "Snoop:", snoop, outcome);
        convert_value(line, "Segment:", segment, outcome);
        convert_value(line, "LargePage:", large_page, outcome);
        if (outcome != Outcome::kDone) {
            return outcome;
        }
        if (line.find("LargePage") != kNone) {
            large_page_ = large_page;
        }
        entry.snoop = static_cast<uint16_t>(snoop);
        entry.segment = static_cast<uint16_t>(segment);
        entry.large_page = large_page_;
        entry.address = without_blanks_behind(behind(line, "Addr:")).substr(0, kLongestText);
        if (level >= 0 && level < static_cast<int32_t>(kPlainLevels)) {
            append(static_cast<std::size_t>(level), entry);
        }
        last_was_sub_table_ = true;
        return outcome;
    }

    void append(std::size_t level, PlainSubTable& entry)
    {
        auto& entries = tree_.sub_tables[level];
        auto& owners = tree_.page_tables[level];
        if (last_was_sub_table_ && !entries.empty()) {
            entry.previous = entries.size() - 1;
            entries.back().next = entries.size();
        }
        if (!last_was_sub_table_ && !owners.empty()) {
            entry.parent = owners.size() - 1;
            owners.back().sub_table = entries.size();
        }
        entries.push_back(entry);
    }

    PlainTree& tree_;
    int32_t last_level_ = -1;  // of page tables; -1: none yet
    bool last_was_sub_table_ = false;
    int32_t large_page_ = 0;
};

}  // namespace

Outcome build_plainly(std::string_view text, PlainTree& tree)
{
    PlainBuilder builder{tree};
    Outcome outcome = Outcome::kDone;
    while (outcome == Outcome::kDone && !text.empty()) {
        const std::size_t newline = text.find('\n');
        const std::size_t length = newline == std::string_view::npos ? text.size() : newline + 1;
        const std::string line{text.substr(0, std::min(length, kLongestLine))};
        text.remove_prefix(line.size());
        outcome = builder.add(up_to_nul(line));
    }
    return outcome;
}

void name_owners(PlainTree& tree)
{
    for (std::size_t level = 0; level < kPlainLevels; ++level) {
        auto& entries = tree.sub_tables[level];
        for (std::size_t head = 0; head < entries.size(); ++head) {
            if (entries[head].previous != kNowhere || entries[head].parent == kNowhere) {
                continue;
            }
            const PlainPageTable& owner = tree.page_tables[level][entries[head].parent];
            for (std::size_t each = head; each != kNowhere; each = entries[each].next) {
                entries[each].parent_level = static_cast<int32_t>(level);
                entries[each].parent_index = owner.index;
            }
        }
    }
}

}  // namespace nimba::fuzz
