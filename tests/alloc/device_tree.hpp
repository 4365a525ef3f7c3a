// SPDX-License-Identifier: MIT
// The device contexts of the current adapter as its driver shows them, and what the library makes
// of them.
#pragma once

#include "nimba_mgmt_interface.h"
#include "support/captured_stdout.hpp"
#include "support/temp_directory.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace nimba::test {

struct Context {
    std::int32_t pid;
    std::int32_t handle;
    std::string process_name;

    bool operator==(const Context&) const = default;
};

using Contexts = std::vector<Context>;

inline void PrintTo(const Context& context, std::ostream* out)
{
    *out << "{" << context.pid << ", " << context.handle << ", \"" << context.process_name << "\"}";
}

inline bool is_zero(const gfx_device_pid& entry)
{
    const gfx_device_pid zero{};
    return std::memcmp(&entry, &zero, sizeof zero) == 0;
}

class DeviceMapTest : public testing::Test {
  protected:
    DeviceMapTest()
    {
        std::filesystem::create_directory(devices());
        const std::string path = tree_.path().string();
        if (path.size() >= sizeof sys_kernel_debug_ID_dri_ADAPTER_path) {
            throw std::length_error{"the temporary directory has a long path: " + path};
        }
        std::strcpy(sys_kernel_debug_ID_dri_ADAPTER_path, path.c_str());
        std::memset(&map_, 0xa5, sizeof map_);
    }
    ~DeviceMapTest() override { sys_kernel_debug_ID_dri_ADAPTER_path[0] = '\0'; }

    std::filesystem::path devices() const { return tree_.path() / "devices"; }

    // Adds a context as a VA driver shows it.
    void add(const std::string& entry, std::string_view text) const { add(entry, "info", text); }
    void add(const std::string& entry, const std::string& node, std::string_view text) const
    {
        std::filesystem::create_directory(devices() / entry);
        write_file(devices() / entry / node, text);
    }

    // Adds the contexts "0", "1", ... with their number as handle, and returns what they are read
    // as.
    Contexts add_numbered(int count) const
    {
        Contexts contexts;
        for (int i = 0; i < count; ++i) {
            char handle[16];
            std::snprintf(handle, sizeof handle, "%x", static_cast<unsigned>(i));
            add(std::to_string(i), std::string{"handle = "} + handle + "\n");
            contexts.push_back({0, i, ""});
        }
        return contexts;
    }

    // Lists the contexts; fills status_, output_ and map_.
    void list(std::int32_t va_driver = 1)
    {
        output_ = stdout_of([&] { status_ = get_device_pid_maps_internal(&map_, 0, va_driver); });
    }

    // The first `count` entries of map_; expects that all others are zero.
    Contexts entries(std::size_t count) const
    {
        Contexts found;
        for (std::size_t i = 0; i < count; ++i) {
            const gfx_device_pid& entry = map_.entries[i];
            found.push_back({entry.pid, entry.handle, entry.process_name});
        }
        for (std::size_t i = count; i < ALLOCATION_SUMMARY_MAX; ++i) {
            EXPECT_TRUE(is_zero(map_.entries[i])) << "entry " << i;
        }
        return found;
    }

    // What the only context is read as when this is its node.
    Context context_of(std::string_view text)
    {
        add("only", text);
        list();
        EXPECT_EQ(status_, 0);
        EXPECT_EQ(output_, "");
        return entries(1).front();
    }

    TempDirectory tree_;
    std::int32_t status_ = 42;
    std::string output_;
    _GFX_DEVICE_PID_MAP map_;  // full of 0xa5 until it is written
};

}  // namespace nimba::test
