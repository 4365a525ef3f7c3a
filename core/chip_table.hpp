// SPDX-License-Identifier: MIT
// What is known of the product's chips, and of the other vendors that discovery names.
#pragma once

#include "nimba_mgmt_interface.h"

#include <cstdint>

namespace nimba {

// The names that depend on the vendor alone.
struct ChipFamily {
    uint32_t vendor_id;
    const char* driver_dir;  // in debugfs, under dri/<card>
    const char* info_dir;    // in the PCI device's directory
};

struct Chip {
    uint32_t vendor_id;
    uint32_t device_id;
    const char* name;           // behind "Gpu<slot>:"
    const char* found_message;  // what discovery logs
    const char* kernel_interface;
    const char* kernel_interface_fallback;  // null: none
};

struct ForeignVendor {
    uint32_t vendor_id;
    const char* name;
    const char* found_message;
};

// The product's family with that vendor, or null.
const ChipFamily* find_family(uint32_t vendor_id);

// The chip with that vendor and device, or null.
const Chip* find_chip(uint32_t vendor_id, uint32_t device_id);

// The chip with that device identifier, whatever the vendor, or null.
const Chip* find_chip(uint32_t device_id);

// Whether that is one of the Nimba family's chips; 0, no chip, is none.
bool is_nimba_chip(uint32_t device_id);

// The vendor of another product's GPU, or null when it is not one of the well-known.
const ForeignVendor* find_foreign_vendor(uint32_t vendor_id);

}  // namespace nimba
