// SPDX-License-Identifier: MIT
// Collecting page tables and allocations of a driver that a test makes up.
#pragma once

#include "alloc/recorded_pauses.hpp"
#include "collector_driver.hpp"
#include "collector_processes.hpp"
#include "nimba_mgmt_interface.h"
#include "support/captured_stdout.hpp"
#include "support/descriptor.hpp"
#include "support/messages.hpp"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cerrno>
#include <cstdint>
#include <string>
#include <vector>

namespace nimba::test {

// The page-table entry in short: "level:index addr buffer".
inline std::string in_short(const vidmm_vm_pt& entry)
{
    return std::to_string(entry.PT_Level) + ":" + std::to_string(entry.PT_index) + " " +
           entry.Addr + " " + entry.Buffer;
}

// The sub-table entry in short: "level:index snoop,segment,large page addr of owner".
inline std::string in_short(const vidmm_vm_pte_elt3k& entry)
{
    return std::to_string(entry.ST_Level) + ":" + std::to_string(entry.Index) + " " +
           std::to_string(entry.Snoop) + "," + std::to_string(entry.Segment) + "," +
           std::to_string(entry.LargePage) + " " + entry.Addr + " of " +
           std::to_string(entry.parent_level) + ":" + std::to_string(entry.parent_index);
}

template <class Entry>
Texts in_short(const std::vector<Entry>& entries)
{
    Texts texts;
    for (const Entry& entry : entries) {
        texts.push_back(in_short(entry));
    }
    return texts;
}

inline std::string repeated(const std::string& text, int count)
{
    std::string all;
    for (int i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

// A dump of one page-table entry.
inline constexpr const char* kOneEntry = "0:7: entry addr:1000, buffer:root\n";

// Whether the process has no child, also none that has ended.
inline bool has_no_child()
{
    return ::waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD;
}

class CollectorTest : public testing::Test {
  protected:
    CollectorTest() { take_pauses(); }

    // Adds the device of a process, with a small dump.
    void add(const std::string& name, const std::string& pid)
    {
        driver_.add_device(name, "pid = " + pid + "\n", kOneEntry);
    }

    // Runs an action that tells a status; fills status_ and output_. However it ends, it must leave
    // no descriptor open and no process behind.
    template <class Action>
    void run(Action&& action)
    {
        const std::ptrdiff_t descriptors = open_descriptors();
        try {
            output_ = stdout_of([&] { status_ = action(); });
        } catch (...) {
            EXPECT_EQ(open_descriptors(), descriptors);
            EXPECT_TRUE(has_no_child());
            throw;
        }
        EXPECT_EQ(open_descriptors(), descriptors);
        EXPECT_TRUE(has_no_child());
    }
    void collect_once()
    {
        run([&] { return get_PageTable_data(devices_); });
    }
    void collect()
    {
        run([&] { return get_PageTable_data_try(devices_); });
    }
    void collect_both()
    {
        run([&] { return get_current_PageTable_data(devices_, allocations_); });
    }

    // Process id and name of each collected device.
    Texts processes() const
    {
        Texts found;
        for (const data_vectors& device : devices_) {
            found.push_back(std::string{device.pid} + ": " + device.app_name);
        }
        return found;
    }

    DriverTree driver_;
    Processes ps_;
    std::vector<data_vectors> devices_;
    std::vector<allcation_Info> allocations_;
    std::int32_t status_ = 42;
    std::string output_;
};

}  // namespace nimba::test
