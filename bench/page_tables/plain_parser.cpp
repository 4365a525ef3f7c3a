// SPDX-License-Identifier: MIT
#include "bench/page_tables/plain_parser.hpp"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <system_error>
#include <vector>

namespace nimba::bench {
namespace {

constexpr std::size_t kTextMax = 47;
constexpr char kBlanks[] = " \n\r\t";

struct CloseStream {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};

void copy_text(char* field, const std::string& text)
{
    std::memcpy(field, text.c_str(), std::min(text.size(), kTextMax));
}

// What stands between `key` and the next `end` behind it.
std::string text_after(const std::string& line, const std::string& key, const char* end)
{
    const std::size_t found = line.find(key);
    if (found == std::string::npos) {
        return "";
    }
    const std::size_t start = found + key.size();
    return line.substr(start, line.find(end, start) - start);
}

std::string rest_after(const std::string& line, const std::string& key)
{
    const std::string rest = text_after(line, key, "\n");
    return rest.substr(0, rest.find_last_not_of(kBlanks) + 1);
}

int level_of(const std::string& line)
{
    return std::stoi(line.substr(0, line.find(':')));
}

class PlainParser final {
  public:
    explicit PlainParser(data_vectors& device)
        : page_tables_{&device.pt_level0, &device.pt_level1, &device.pt_level2},
          sub_tables_{&device.st_level0, &device.st_level1, &device.st_level2}
    {
    }

    void take(const std::string& line)
    {
        if (line.find("entry") != std::string::npos) {
            take_page_table_line(line);
        } else if (line.find("Snoop") != std::string::npos) {
            take_sub_table_line(line);
        }
    }

  private:
    void take_page_table_line(const std::string& line)
    {
        vidmm_vm_pt entry{};
        entry.PT_Level = level_of(line);
        entry.PT_index = std::stoi(text_after(line, ":", ":"));
        copy_text(entry.Addr, text_after(line, "addr:", ","));
        copy_text(entry.Buffer, rest_after(line, "buffer:"));
        if (entry.PT_Level < 0 || entry.PT_Level > 2) {
            return;
        }
        if (entry.PT_Level == 0) {
            page_tables_[0]->push_back(entry);
        } else if (last_level_ == entry.PT_Level - 1) {
            append_child(entry);
        } else if (last_level_ >= entry.PT_Level) {
            append_sibling(entry);
        }
        last_level_ = entry.PT_Level;
        behind_sub_table_line_ = false;
    }

    void append_child(vidmm_vm_pt entry)
    {
        const auto level = static_cast<std::size_t>(entry.PT_Level);
        std::vector<vidmm_vm_pt>& parents = *page_tables_[level - 1];
        entry.parent = &parents.back();
        page_tables_[level]->push_back(entry);
        parents.back().entries = &page_tables_.at(level)->back();
    }

    void append_sibling(vidmm_vm_pt entry)
    {
        std::vector<vidmm_vm_pt>& entries = *page_tables_[static_cast<std::size_t>(entry.PT_Level)];
        entry.pre = &entries.back();
        entries.push_back(entry);
        entries.back().pre->next = &entries.back();
    }

    void take_sub_table_line(const std::string& line)
    {
        vidmm_vm_pte_elt3k entry{};
        entry.ST_Level = level_of(line);
        entry.Index = std::stoi(text_after(line, ":", " "));
        entry.Snoop = static_cast<uint16_t>(std::stoi(text_after(line, "Snoop:", " ")));
        entry.Segment = static_cast<uint16_t>(std::stoi(text_after(line, "Segment:", " ")));
        if (line.find("LargePage") != std::string::npos) {
            large_page_ = std::stoi(text_after(line, "LargePage:", " "));
        }
        entry.LargePage = large_page_;
        copy_text(entry.Addr, rest_after(line, "Addr:"));
        append_sub_table_entry(entry);
        behind_sub_table_line_ = true;
    }

    void append_sub_table_entry(vidmm_vm_pte_elt3k entry)
    {
        const auto level = static_cast<std::size_t>(entry.ST_Level);
        std::vector<vidmm_vm_pte_elt3k>& entries = *sub_tables_.at(level);
        if (behind_sub_table_line_) {
            entry.pre = &entries.back();
            entries.push_back(entry);
            entries.back().pre->next = &entries.back();
        } else {
            entry.parent = &page_tables_.at(level)->back();
            entries.push_back(entry);
            entry.parent->PT_sub_entries = &entries.back();
        }
    }

    std::array<std::vector<vidmm_vm_pt>*, 3> page_tables_;
    std::array<std::vector<vidmm_vm_pte_elt3k>*, 3> sub_tables_;
    int last_level_ = -1;
    int large_page_ = 0;
    bool behind_sub_table_line_ = false;
};

}  // namespace

void parse_plainly(const std::string& path, data_vectors& device)
{
    const std::unique_ptr<std::FILE, CloseStream> node{std::fopen(path.c_str(), "r")};
    if (node == nullptr) {
        throw std::system_error{errno, std::generic_category(), path};
    }
    PlainParser parser{device};
    std::array<char, 512> buffer{};
    while (std::fgets(buffer.data(), buffer.size(), node.get()) != nullptr) {
        const std::string line = buffer.data();
        parser.take(line);
    }
}

}  // namespace nimba::bench
