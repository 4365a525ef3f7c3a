// SPDX-License-Identifier: MIT
// The leak detector over a tree of allocations that the test shows.
#pragma once

#include "allocation_tree.hpp"
#include "core/current_adapter.hpp"
#include "directory_listing.hpp"
#include "leak_records.hpp"
#include "support/captured_stdout.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace nimba::test {

// The node of an allocation as a VA driver writes it.
inline std::string node_text(const Record& record)
{
    // Handles are read as signed numbers.
    char handle[32];
    std::snprintf(handle, sizeof handle, "handle=%s%llx\n", record.handle < 0 ? "-" : "",
                  static_cast<unsigned long long>(std::llabs(record.handle)));
    std::string text = handle;
    for (const RecordField& field : kGroupKey) {
        text += std::string{field.name} + "=" + std::to_string(record.*field.member) + "\n";
    }
    for (const RecordField& field : kFreeFields) {
        text += std::string{field.name} + "=" + std::to_string(record.*field.member) + "\n";
    }
    return text;
}

class LeakTest : public testing::Test {
  protected:
    LeakTest()
    {
        current_is_va_driver = 1;
        vec_memleak_result.clear();
        fill_report();
    }
    ~LeakTest() override
    {
        vec_memleak_result.clear();
        current_is_va_driver = 0;
    }

    // The driver now has these allocations, in this order.
    void show(const Records& records)
    {
        names_.clear();
        for (const Record& record : records) {
            names_.push_back(std::to_string(names_.size()));
            tree_.add(names_.back(), node_text(record));
        }
    }
    // The driver now has `count` allocations that are all like this one.
    void show_repeatedly(const Record& record, std::size_t count)
    {
        show({record});
        names_.assign(count, names_.front());
    }
    // The driver now has one allocation, with this node.
    void show_text(std::string_view text)
    {
        names_ = {"only"};
        tree_.add("only", text);
    }
    // The driver now has one allocation, which vanishes before it can be read.
    void show_missing() { names_ = {"missing"}; }
    // The driver now has these allocations, and one more that vanishes before it can be read.
    void show_and_one_missing(const Records& records)
    {
        show(records);
        names_.emplace_back("missing");
    }
    // No adapter is current.
    static void leave_adapter() { sys_kernel_debug_ID_dri_ADAPTER_path[0] = '\0'; }
    void remove_allocations() const { std::filesystem::remove_all(tree_.allocations()); }

    // Takes a snapshot; fills output_ and report_.
    std::int32_t query()
    {
        const ListedAs order{names_};
        const CapturedStdout captured;
        const std::int32_t status = get_memleak_info(&report_);
        output_ = captured.text();
        return status;
    }

    // As query, through the worker that is told the adapter.
    void query_worker()
    {
        const ListedAs order{names_};
        output_ = stdout_of([&] { get_memleak_information(&report_, 0, 1); });
    }

    // The first `count` groups of the report; expects that all others are zero.
    Records report(std::size_t count) const
    {
        for (std::size_t i = count; i < MEMLEAK_REPORT_MAX; ++i) {
            EXPECT_EQ(report_.groups[i], Record{}) << "group " << i;
        }
        return {report_.groups, report_.groups + count};
    }

    void fill_report() { std::memset(&report_, 0xa5, sizeof report_); }
    bool report_is_untouched() const
    {
        _GFX_MEMLEAK_INFO untouched;
        std::memset(&untouched, 0xa5, sizeof untouched);
        return std::memcmp(&report_, &untouched, sizeof untouched) == 0;
    }

    _GFX_MEMLEAK_INFO report_;
    std::string output_;

  private:
    AllocationTree tree_;
    std::vector<std::string> names_;
};

}  // namespace nimba::test
