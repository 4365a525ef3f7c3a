// SPDX-License-Identifier: MIT
#include "product.hpp"

#include "nimba_mgmt_interface.h"

#include <array>

namespace nimba::sim {
namespace {

constexpr std::array kProductVendors{
    Vendor{"nimba", NIMBA_VENDOR_ID, "jw"},
    Vendor{"qv", QV_VENDOR_ID, "qv"},
};

constexpr std::array kForeignVendors{
    Vendor{"nvidia", 0x10DE, "nvidia-drm"},
    Vendor{"intel", 0x8086, "i915"},
    Vendor{"amd", 0x1002, "amdgpu"},
};

constexpr std::string_view kNimbaLibrary = "libnimbahwbridge_v2.so.0.0.0";
constexpr std::string_view kMv9Library = "libmv9hwbridge_v2.so.0.0.0";
constexpr std::string_view kMv9DrmLibrary = "libdrm_mv9.so.0.0.0";
constexpr std::string_view kQvLibrary = "libhwbridge_qv.so.0.0.0";

constexpr std::array kKernelInterfaceFiles{kNimbaLibrary, kMv9Library, kMv9DrmLibrary, kQvLibrary};

constexpr std::array kChips{
    Chip{"nimba-k1", NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K1, kNimbaLibrary},
    Chip{"nimba-k2", NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K2, kNimbaLibrary},
    Chip{"nimba-k3", NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K3, kNimbaLibrary},
    Chip{"nimba-k3t", NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K3T, kNimbaLibrary},
    Chip{"nimba-k5", NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K5, kNimbaLibrary},
    Chip{"nimba-k6", NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K6, kNimbaLibrary},
    Chip{"qv-m20", QV_VENDOR_ID, DEVICE_ID_QV_M20, kQvLibrary},
    Chip{"qv-m30", QV_VENDOR_ID, DEVICE_ID_QV_M30, kMv9Library},
    Chip{"qv-m40", QV_VENDOR_ID, DEVICE_ID_QV_M40, kMv9Library},
};

}  // namespace

std::span<const Vendor> product_vendors()
{
    return kProductVendors;
}

std::span<const Vendor> foreign_vendors()
{
    return kForeignVendors;
}

std::span<const Chip> chips()
{
    return kChips;
}

std::span<const std::string_view> kernel_interface_files()
{
    return kKernelInterfaceFiles;
}

}  // namespace nimba::sim
