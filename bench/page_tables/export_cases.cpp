// SPDX-License-Identifier: MIT
#include "bench/page_tables/export_cases.hpp"

#include "bench/page_tables/driver_root.hpp"
#include "nimba_mgmt_interface.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace nimba::bench {
namespace {

using Records = std::vector<_PAGETABLE_DATA>;

constexpr std::string_view kDigitCharacters = "0123456789abcdef";
constexpr std::uint8_t kNoDigit = 16;

constexpr std::array<std::uint8_t, 256> digit_values()
{
    std::array<std::uint8_t, 256> values{};
    values.fill(kNoDigit);
    for (std::size_t i = 0; i < kDigitCharacters.size(); ++i) {
        values[static_cast<unsigned char>(kDigitCharacters[i])] = static_cast<std::uint8_t>(i);
    }
    return values;
}

constexpr std::array<std::uint8_t, 256> kDigitValues = digit_values();

std::int64_t number_of(const char* text)
{
    std::int64_t number = 0;
    std::uint8_t value = 0;
    while ((value = kDigitValues[static_cast<unsigned char>(*text)]) != kNoDigit) {
        number = number * 16 + value;
        ++text;
    }
    return number;
}

// Calls `take` with the number of each address in the kept list, in the order of the records.
template <class Take>
void convert_addresses(const Take& take)
{
    const auto convert = [&](const auto& entries) {
        for (const auto& entry : entries) {
            take(number_of(entry.Addr));
        }
    };
    for (const data_vectors& device : Pagetable_List) {
        convert(device.pt_level0);
        convert(device.pt_level1);
        convert(device.pt_level2);
        convert(device.st_level0);
        convert(device.st_level1);
        convert(device.st_level2);
    }
}

void expect(bool good, const char* what)
{
    if (!good) {
        throw std::runtime_error{std::string{what} + ": not what the dumps are"};
    }
}

Records exported(const DumpTree& tree)
{
    replace_driver_root(tree.path());
    std::uint32_t count = 0;
    get_pagetable_data(nullptr, &count);
    expect(Get_Local_Data_Status == 0 && static_cast<int>(count) == tree.lines(), name::kExport);
    Records records(count);
    get_pagetable_data(records.data(), nullptr);
    return records;
}

void check_addresses(const Records& records)
{
    auto record = records.begin();
    convert_addresses([&](std::int64_t number) {
        expect(record != records.end() && record->addr == number, name::kExport);
        ++record;
    });
    expect(record == records.end(), name::kDigits);
}

// The first pass over the kept list is not timed: after it every way finds caches alike.
template <class Pass>
Case pass_case(const char* case_name, const DumpTree& tree, const Pass& pass)
{
    constexpr std::int64_t kIterations = 3;
    return {case_name, tree.lines(), kIterations, false, [pass](benchmark::State& state) {
                pass();
                for ([[maybe_unused]] auto _ : state) {
                    pass();
                    benchmark::ClobberMemory();
                }
            }};
}

}  // namespace

std::vector<Case> export_cases(const DumpTree& tree)
{
    const auto records = std::make_shared<const Records>(exported(tree));
    check_addresses(*records);
    const auto buffer = std::make_shared<Records>(*records);
    const auto export_records = [buffer] { get_pagetable_data(buffer->data(), nullptr); };
    const auto copy_records = [buffer, records] {
        std::memcpy(buffer->data(), records->data(), records->size() * sizeof(_PAGETABLE_DATA));
    };
    const auto convert_digits = [] {
        convert_addresses([](std::int64_t number) { benchmark::DoNotOptimize(number); });
    };
    return {pass_case(name::kExport, tree, export_records),
            pass_case(name::kRecordCopy, tree, copy_records),
            pass_case(name::kDigits, tree, convert_digits)};
}

}  // namespace nimba::bench
