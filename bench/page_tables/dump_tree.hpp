// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace nimba::bench {

// How many lines the dump of one device has.
struct DumpSize {
    // In the proportions of a large device: 100, 1,000 and 20,000 page-table entries to 300,000
    // sub-table entries, and at least one of each.
    static DumpSize of(int sub_table_lines);

    int level0;  // page-table lines by level
    int level1;
    int level2;
    int sub_table;  // all of level 2

    [[nodiscard]] int lines() const { return level0 + level1 + level2 + sub_table; }
    // What the records of the lines take.
    [[nodiscard]] std::size_t record_bytes() const;
};

// A driver's directory with the page tables of some devices and without allocations, removed with
// this object.
class DumpTree final {
  public:
    // Makes `directory`. All devices belong to this process. Throws std::system_error.
    DumpTree(std::filesystem::path directory, int devices, const DumpSize& size);
    ~DumpTree();
    DumpTree(const DumpTree&) = delete;
    DumpTree& operator=(const DumpTree&) = delete;

    [[nodiscard]] int devices() const { return static_cast<int>(dumps_.size()); }
    [[nodiscard]] const DumpSize& size() const { return size_; }
    [[nodiscard]] int lines() const { return devices() * size_.lines(); }  // of all devices
    [[nodiscard]] std::size_t record_bytes() const { return dumps_.size() * size_.record_bytes(); }
    [[nodiscard]] const std::filesystem::path& path() const { return directory_; }
    [[nodiscard]] const std::vector<std::string>& dumps() const { return dumps_; }  // their paths

  private:
    std::filesystem::path directory_;
    DumpSize size_;
    std::vector<std::string> dumps_;
};

}  // namespace nimba::bench
