// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace nimba::bench {

enum class Shapes {
    kMixed,  // every third allocation has a shape of its own, the others share 64
    kOne,    // all are alike but for their handles
};

// A driver's debug directory with live allocations, removed with this object. Each node holds all
// keys that a record has.
class AllocationTree final {
  public:
    // Makes `directory` with `count` allocations. Their handles differ from each other and from
    // those of any tree whose numbers from `first` to `first` + count - 1 are others. Throws
    // std::system_error.
    AllocationTree(std::filesystem::path directory, int count, Shapes shapes, int first = 0);
    ~AllocationTree();
    AllocationTree(const AllocationTree&) = delete;
    AllocationTree& operator=(const AllocationTree&) = delete;

    int count() const { return count_; }
    std::int64_t bytes() const { return bytes_; }  // of all nodes together
    const std::filesystem::path& path() const { return directory_; }

    // Makes this the current adapter's debug directory. Throws std::runtime_error when its path is
    // too long for that.
    void select() const;

  private:
    void add(const std::string& name, const std::string& text);

    std::filesystem::path directory_;
    int count_;
    std::int64_t bytes_ = 0;
};

}  // namespace nimba::bench
