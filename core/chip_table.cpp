// SPDX-License-Identifier: MIT
#include "core/chip_table.hpp"

#include <algorithm>
#include <array>

namespace nimba {
namespace {

constexpr std::array kFamilies{
    ChipFamily{NIMBA_VENDOR_ID, "jw", "jw_info"},
    ChipFamily{QV_VENDOR_ID, "qv", "qv_info"},
};

constexpr const char* kNimbaLibrary = "libnimbahwbridge_v2.so.0.0.0";
constexpr const char* kMv9Library = "libmv9hwbridge_v2.so.0.0.0";
constexpr const char* kMv9DrmLibrary = "libdrm_mv9.so.0.0.0";
constexpr const char* kQvLibrary = "libhwbridge_qv.so.0.0.0";

// clang-format off
constexpr std::array kChips{
    Chip{QV_VENDOR_ID, DEVICE_ID_QV_M30, "QV M-30", "find chip mv9\n", kMv9Library, kMv9DrmLibrary},
    Chip{QV_VENDOR_ID, DEVICE_ID_QV_M20, "QV M-20", "find chip kpl310\n", kQvLibrary, nullptr},
    Chip{QV_VENDOR_ID, DEVICE_ID_QV_M40, "QV M-40", "find chip rsd520\n", kMv9Library, kMv9DrmLibrary},
    Chip{NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K1, "Nimba-K1", "find chip nimbak1\n", kNimbaLibrary, nullptr},
    Chip{NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K2, "NimbaK2", "find chip nimbak2\n", kNimbaLibrary, nullptr},
    Chip{NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K3, "Nimba-GT-K3", "find chip nimbak3\n", kNimbaLibrary, nullptr},
    Chip{NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K3T, "Nimba-GT-K3t", "find chip nimbak3t\n", kNimbaLibrary, nullptr},
    Chip{NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K5, "NimbaK5", "find chip nimbak5\n", kNimbaLibrary, nullptr},
    Chip{NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K6, "Nimba-K6", "find chip nimbak6\n", kNimbaLibrary, nullptr},
};
// clang-format on

constexpr std::array kForeignVendors{
    ForeignVendor{0x10DE, "Nvidia-GPU", "find chip nvidia\n"},
    ForeignVendor{0x8086, "Intel-GPU", "find chip intel\n"},
    ForeignVendor{0x1002, "Amd-GPU", "find chip amd\n"},
};

constexpr bool device_ids_differ_pairwise()
{
    return std::ranges::all_of(kChips, [](const Chip& chip) {
        return std::ranges::count(kChips, chip.device_id, &Chip::device_id) == 1;
    });
}

static_assert(device_ids_differ_pairwise(),
              "two chips were configured with the same device identifier");
static_assert(NIMBA_VENDOR_ID != QV_VENDOR_ID,
              "both vendors were configured with the same identifier");

template <typename Row, std::size_t count, typename Predicate>
const Row* find_row(const std::array<Row, count>& table, Predicate matches)
{
    const auto row = std::ranges::find_if(table, matches);
    return row == table.end() ? nullptr : &*row;
}

}  // namespace

const ChipFamily* find_family(uint32_t vendor_id)
{
    return find_row(kFamilies, [=](const ChipFamily& row) { return row.vendor_id == vendor_id; });
}

const Chip* find_chip(uint32_t vendor_id, uint32_t device_id)
{
    return find_row(kChips, [=](const Chip& row) {
        return row.vendor_id == vendor_id && row.device_id == device_id;
    });
}

const Chip* find_chip(uint32_t device_id)
{
    return find_row(kChips, [=](const Chip& row) { return row.device_id == device_id; });
}

bool is_nimba_chip(uint32_t device_id)
{
    const Chip* const chip = find_chip(device_id);
    return chip != nullptr && chip->vendor_id == NIMBA_VENDOR_ID;
}

const ForeignVendor* find_foreign_vendor(uint32_t vendor_id)
{
    return find_row(kForeignVendors,
                    [=](const ForeignVendor& row) { return row.vendor_id == vendor_id; });
}

}  // namespace nimba
