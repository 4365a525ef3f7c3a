// SPDX-License-Identifier: MIT
// Reading the allocations of a driver that a test makes up.
#pragma once

#include "allocation_tree.hpp"
#include "directory_listing.hpp"
#include "leak_records.hpp"
#include "recorded_pauses.hpp"
#include "support/captured_stdout.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace nimba::test {

using Names = std::vector<std::string>;

class AllocationReader : public testing::Test {
  protected:
    AllocationReader() { take_pauses(); }

    // Adds the allocations "1" to `count`, each with its name as its handle; 9 at most.
    void add_numbered(int count) const
    {
        for (int number = 1; number <= count; ++number) {
            const std::string name = std::to_string(number);
            tree_.add(name, "handle=" + name + "\n");
        }
    }

    // One pass, appended to list_; fills status_ and output_.
    void read_once(std::int32_t va_driver = 1)
    {
        output_ =
            stdout_of([&] { status_ = get_current_allocation_data_try(list_, 0, va_driver); });
    }
    // As many passes as it takes.
    void read(std::int32_t va_driver = 1)
    {
        output_ = stdout_of([&] { status_ = get_current_allocation_data(list_, 0, va_driver); });
    }

    // The handles in list_, in hexadecimal; those below 16.
    Names handles() const
    {
        Names found;
        for (const Record& record : list_) {
            found.emplace_back(1, "0123456789abcdef"[record.handle & 15]);
        }
        return found;
    }

    AllocationTree tree_;
    Records list_;
    std::int32_t status_ = 42;
    std::string output_;
};

}  // namespace nimba::test
