// SPDX-License-Identifier: MIT
#include "tools/smi/doctor/chip_libraries.hpp"

#include "nimba_mgmt_interface.h"

#include <algorithm>
#include <array>

namespace nimba::smi {
namespace {

constexpr std::array kNimbaFiles{"libnimbahwbridge_v2.so.0.0.0"};
constexpr std::array kMv9Files{"libmv9hwbridge_v2.so.0.0.0", "libdrm_mv9.so.0.0.0"};
constexpr std::array kQvFiles{"libhwbridge_qv.so.0.0.0"};

struct ChipRow {
    uint32_t device_id;
    std::span<const char* const> files;
};

constexpr std::array kChips{
    ChipRow{DEVICE_ID_NIMBA_K1, kNimbaFiles}, ChipRow{DEVICE_ID_NIMBA_K2, kNimbaFiles},
    ChipRow{DEVICE_ID_NIMBA_K3, kNimbaFiles}, ChipRow{DEVICE_ID_NIMBA_K3T, kNimbaFiles},
    ChipRow{DEVICE_ID_NIMBA_K5, kNimbaFiles}, ChipRow{DEVICE_ID_NIMBA_K6, kNimbaFiles},
    ChipRow{DEVICE_ID_QV_M20, kQvFiles},      ChipRow{DEVICE_ID_QV_M30, kMv9Files},
    ChipRow{DEVICE_ID_QV_M40, kMv9Files},
};

}  // namespace

std::span<const char* const> kernel_interface_files(uint32_t device_id)
{
    const auto* const row = std::ranges::find(kChips, device_id, &ChipRow::device_id);
    return row == kChips.end() ? std::span<const char* const>{} : row->files;
}

}  // namespace nimba::smi
