// SPDX-License-Identifier: MIT
// The product's vendors and chips, by the names that machine files use.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace nimba::sim {

struct Vendor {
    std::string_view name;
    uint16_t id;
    std::string_view driver;  // the kernel driver, as its version and its directories call it
};

struct Chip {
    std::string_view name;
    uint16_t vendor;
    uint16_t device;
    std::string_view kernel_interface;  // the library that the chip needs
};

std::span<const Vendor> product_vendors();
std::span<const Vendor> foreign_vendors();
std::span<const Chip> chips();

// The file names under which the product's kernel-interface libraries are looked for.
std::span<const std::string_view> kernel_interface_files();

}  // namespace nimba::sim
