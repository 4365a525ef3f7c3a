// SPDX-License-Identifier: MIT
// The summaries of the allocations that a test makes up; both kinds are tested alike.
#pragma once

#include "allocation_tree.hpp"
#include "support/captured_stdout.hpp"
#include "support/messages.hpp"
#include "support/scoped_print_callback.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

namespace nimba::test {

struct Entry {
    std::int32_t device;
    std::array<std::int64_t, SEGMENT_SLOT_NUM> sums;

    bool operator==(const Entry&) const = default;
};
using Entries = std::vector<Entry>;

inline void PrintTo(const Entry& entry, std::ostream* out)
{
    *out << entry.device << ":";
    for (const std::int64_t sum : entry.sums) {
        *out << " " << sum;
    }
}

struct Sums32 {
    using Buffer = _GFX_DEVICE_ALLOCATION_SUMMARY;
    static constexpr const char* kName = "Sums32";
    static constexpr auto internal = get_device_allocation_summary_internal;
    static constexpr auto entry_point = get_device_allocation_summary;
};

struct Sums64 {
    using Buffer = _GFX_DEVICE_ALLOCATION_SUMMARY_EXT1;
    static constexpr const char* kName = "Sums64";
    static constexpr auto internal = get_device_allocation_summary_internal_ext1;
    static constexpr auto entry_point = get_device_allocation_summary_ext1;
};

using SummaryWidths = testing::Types<Sums32, Sums64>;

struct NameOfWidth {
    template <class Width>
    static std::string GetName(int)
    {
        return Width::kName;
    }
};

template <class Width>
class DeviceSummaryTest : public testing::Test {
  protected:
    static constexpr bool kWide = std::is_same_v<Width, Sums64>;

    DeviceSummaryTest() { take_messages(); }

    void TearDown() override { EXPECT_EQ(take_messages(), Texts{}); }

    void add(const std::string& name, std::int32_t device, std::int32_t segment,
             std::int64_t size) const
    {
        tree_.add(name, "device=" + std::to_string(device) + "\nsegmentid=" +
                            std::to_string(segment) + "\nsize=" + std::to_string(size) + "\n");
    }
    // Adds an allocation of each device from 1 to `count`, each with its number as its size in
    // segment 0. Returns the names in that order.
    std::vector<std::string> add_devices(int count) const
    {
        std::vector<std::string> names;
        for (int device = 1; device <= count; ++device) {
            names.push_back(std::to_string(device));
            add(names.back(), device, 0, device);
        }
        return names;
    }

    // Summarises in a buffer full of 0xa5; fills buffer_, status_ and output_.
    void summarise(std::int32_t va_driver = 1)
    {
        std::memset(&buffer_, 0xa5, sizeof buffer_);
        output_ = stdout_of([&] { status_ = Width::internal(&buffer_, 0, va_driver); });
    }
    void summarise_current()
    {
        std::memset(&buffer_, 0xa5, sizeof buffer_);
        output_ = stdout_of([&] { status_ = Width::entry_point(&buffer_); });
    }

    // The first `count` entries; expects that all others are zero, and what is reserved in all.
    Entries entries(std::size_t count) const
    {
        Entries found;
        for (std::size_t i = 0; i < ALLOCATION_SUMMARY_MAX; ++i) {
            const auto& entry = buffer_.entries[i];
            Entry next{entry.device, {}};
            std::copy(std::begin(entry.segment_size), std::end(entry.segment_size),
                      next.sums.begin());
            if constexpr (kWide) {
                EXPECT_EQ(entry.reserved, 0U) << "entry " << i;
            }
            if (i < count) {
                found.push_back(next);
            } else {
                EXPECT_EQ(next, (Entry{0, {}})) << "entry " << i;
            }
        }
        return found;
    }

    AllocationTree tree_;
    const ScopedPrintCallback callback_{keep_message};  // never called: messages are output
    typename Width::Buffer buffer_;
    std::int32_t status_ = 42;
    std::string output_;
};

// What add_devices adds.
inline Entries entries_of_devices(int count)
{
    Entries all;
    for (int device = 1; device <= count; ++device) {
        all.push_back({device, {device, 0, 0, 0, 0}});
    }
    return all;
}

}  // namespace nimba::test
