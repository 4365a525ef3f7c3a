// SPDX-License-Identifier: MIT
// The allocations of the current adapter as its driver shows them.
#pragma once

#include "nimba_mgmt_interface.h"
#include "support/temp_directory.hpp"

#include <array>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

namespace nimba::test {

// A debug directory without allocations, to which the library looks in this object's scope.
class AllocationTree final {
  public:
    AllocationTree()
    {
        std::filesystem::create_directory(allocations());
        std::memcpy(before_.data(), sys_kernel_debug_ID_dri_ADAPTER_path, before_.size());
        const std::string path = debug_directory().string();
        if (path.size() >= before_.size()) {
            throw std::length_error{"the temporary directory has a long path: " + path};
        }
        std::strcpy(sys_kernel_debug_ID_dri_ADAPTER_path, path.c_str());
    }
    ~AllocationTree()
    {
        std::memcpy(sys_kernel_debug_ID_dri_ADAPTER_path, before_.data(), before_.size());
    }
    AllocationTree(const AllocationTree&) = delete;
    AllocationTree& operator=(const AllocationTree&) = delete;

    const std::filesystem::path& debug_directory() const { return directory_.path(); }
    std::filesystem::path allocations() const { return debug_directory() / "allocations"; }
    std::filesystem::path entry(const std::string& name) const { return allocations() / name; }

    // Adds the allocation, or changes it.
    void add(const std::string& name, std::string_view text) const
    {
        std::filesystem::create_directory(entry(name));
        write_file(entry(name) / "info", text);
    }
    // Adds an allocation that vanishes before it is read.
    void add_without_info(const std::string& name) const
    {
        std::filesystem::create_directory(entry(name));
    }
    void remove(const std::string& name) const { std::filesystem::remove_all(entry(name)); }
    void remove_all() const
    {
        std::filesystem::remove_all(allocations());
        std::filesystem::create_directory(allocations());
    }

  private:
    TempDirectory directory_;
    std::array<char, sizeof sys_kernel_debug_ID_dri_ADAPTER_path> before_{};
};

}  // namespace nimba::test
