// SPDX-License-Identifier: MIT
// Reading the virtual-memory nodes of allocations that a test makes up.
#pragma once

#include "alloc/directory_listing.hpp"
#include "alloc/recorded_pauses.hpp"
#include "driver_root.hpp"
#include "nimba_mgmt_interface.h"
#include "support/captured_stdout.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

inline bool operator==(const allcation_Info& a, const allcation_Info& b)
{
    return a.device_pid == b.device_pid && a.device_pname == b.device_pname &&
           a.allocation_handle == b.allocation_handle && a.gpu_va == b.gpu_va && a.size == b.size;
}

inline std::ostream& operator<<(std::ostream& out, const allcation_Info& info)
{
    return out << '{' << info.device_pid << ", " << info.device_pname << ", "
               << info.allocation_handle << ", " << info.gpu_va << ", " << info.size << '}';
}

namespace nimba::test {

using Names = std::vector<std::string>;
using VmNodes = std::vector<allcation_Info>;

inline constexpr const char* kNoVmNode =
    "Fail to read allocation info.. skip and try it again...\n";

// The text of one virtual-memory node of process 7, "app", with this address.
inline std::string block_at(const std::string& gpu_va)
{
    return "=====vm node info=====\ndevice_pid = 7\ndevice_pname = app\ngpu_va = " + gpu_va +
           "\nsize = 1000\n";
}

class VmNodeReader : public testing::Test {
  protected:
    VmNodeReader()
    {
        take_pauses();
        std::filesystem::create_directory(allocations());
    }

    std::filesystem::path allocations() const { return root_.path() / "allocations"; }

    void add_without_node(const std::string& name) const
    {
        std::filesystem::create_directory(allocations() / name);
    }
    void add(const std::string& name, const std::string& node) const
    {
        add_without_node(name);
        write_file(allocations() / name / "vm_info", node);
    }

    // One pass, appended to list_; fills status_ and output_.
    void read_once()
    {
        output_ = stdout_of([&] { status_ = get_alloction_data_try(list_); });
    }
    // As many passes as it takes.
    void read()
    {
        output_ = stdout_of([&] { status_ = get_alloction_data(list_); });
    }

    // The handles in list_.
    Names handles() const
    {
        Names found;
        for (const allcation_Info& info : list_) {
            found.push_back(info.allocation_handle);
        }
        return found;
    }

    DriverRoot root_;
    VmNodes list_;
    std::int32_t status_ = 42;
    std::string output_;
};

}  // namespace nimba::test
