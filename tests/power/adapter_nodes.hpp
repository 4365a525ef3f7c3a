// SPDX-License-Identifier: MIT
// An adapter whose driver nodes a test makes up.
#pragma once

#include "nimba_mgmt_interface.h"
#include "support/descriptor.hpp"
#include "support/messages.hpp"
#include "support/scoped_print_callback.hpp"
#include "support/temp_directory.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>
#include <string_view>

namespace nimba::test {

// A discovery record as if discovery had filled it: one slot, which chip_id_idx chooses, holds the
// adapter's info and hwmon directories, both empty at first; the other slots hold none.
class AdapterNodes final {
  public:
    AdapterNodes()
    {
        for (gpu_infos& handles : record_.gpu_infos) {
            handles.pci_dir_fd = -1;
            handles.jw_info_dir_fd = -1;
            handles.hwmon_dir_fd = -1;
        }
        handles().jw_info_dir_fd = info_descriptor_.get();
        handles().hwmon_dir_fd = hwmon_descriptor_.get();
        std::strcpy(handles().busid, "0000:03:00.0");
        std::strcpy(record_.header.chip_name[kSlot], "Gpu1:Test");
        record_.chip_id_idx = kSlot;
    }
    AdapterNodes(const AdapterNodes&) = delete;
    AdapterNodes& operator=(const AdapterNodes&) = delete;

    const TempDirectory& info() const { return info_; }
    const TempDirectory& hwmon() const { return hwmon_; }
    find_adapter& record() { return record_; }
    gpu_infos& handles() { return record_.gpu_infos[kSlot]; }
    const gpu_infos& handles() const { return record_.gpu_infos[kSlot]; }
    std::uint32_t& chip_id() { return record_.header.chip_id[kSlot]; }

    static constexpr int kSlot = 1;

  private:
    static int open_directory(const TempDirectory& directory)
    {
        return ::open(directory.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    }

    TempDirectory info_;
    TempDirectory hwmon_;
    Descriptor info_descriptor_{open_directory(info_)};
    Descriptor hwmon_descriptor_{open_directory(hwmon_)};
    find_adapter record_{};
};

// For tests that are linked with the library's objects: the adapter is current for the length of a
// test, and the library's messages are kept (support/messages.hpp).
class AdapterNodesTest : public testing::Test {
  protected:
    AdapterNodesTest()
    {
        gpuinfo_select_new_chip(&adapter_.record());
        take_messages();
    }
    ~AdapterNodesTest() override { pCurrent_gpu_infos = nullptr; }

    void info(const std::string& node, std::string_view text) const
    {
        adapter_.info().write(node, text);
    }
    void hwmon(const std::string& node, std::string_view text) const
    {
        adapter_.hwmon().write(node, text);
    }

    ScopedPrintCallback callback_{keep_message};
    AdapterNodes adapter_;
};

}  // namespace nimba::test
