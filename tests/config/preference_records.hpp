// SPDX-License-Identifier: MIT
#pragma once

#include <nimba_mgmt_interface.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

namespace nimba::test {

struct Preference {
    std::string_view file_name{};
    std::string_view full_path{};
    int32_t prefer = 0;
    std::string_view gpu_name{};
    uint16_t domain = 0;
    uint8_t bus = 0;
    uint8_t device = 0;
    uint8_t function = 0;
};

// The record of a preference; every byte that the preference does not name is zero.
inline _UTIL_GPU_PREFERENCE_NODE record(const Preference& preference)
{
    _UTIL_GPU_PREFERENCE_NODE node{};
    preference.file_name.copy(node.FileName, sizeof node.FileName);
    preference.full_path.copy(node.FullPath, sizeof node.FullPath);
    node.GpuPrefer = preference.prefer;
    preference.gpu_name.copy(node.PreferGpuName, sizeof node.PreferGpuName);
    node.domain = preference.domain;
    node.bus = preference.bus;
    node.device = preference.device;
    node.function = preference.function;
    return node;
}

// Compares all 1116 bytes.
inline testing::AssertionResult same_record(const _UTIL_GPU_PREFERENCE_NODE& actual,
                                            const _UTIL_GPU_PREFERENCE_NODE& expected)
{
    const auto* actual_bytes = reinterpret_cast<const unsigned char*>(&actual);
    const auto* expected_bytes = reinterpret_cast<const unsigned char*>(&expected);
    const auto* end = actual_bytes + sizeof actual;
    const auto [differing, wanted] = std::mismatch(actual_bytes, end, expected_bytes);
    if (differing == end) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << "byte " << differing - actual_bytes << " is "
                                       << int{*differing} << " instead of " << int{*wanted};
}

inline testing::AssertionResult same_records(const std::vector<_UTIL_GPU_PREFERENCE_NODE>& actual,
                                             const std::vector<Preference>& expected)
{
    if (actual.size() != expected.size()) {
        return testing::AssertionFailure()
               << actual.size() << " records instead of " << expected.size();
    }
    for (std::size_t index = 0; index < actual.size(); ++index) {
        if (auto result = same_record(actual[index], record(expected[index])); !result) {
            return result << " in record " << index;
        }
    }
    return testing::AssertionSuccess();
}

}  // namespace nimba::test
