// SPDX-License-Identifier: MIT
// The parts of a machine file that every kind of graphics device has.
#pragma once

#include "claims.hpp"
#include "machine.hpp"
#include "product.hpp"
#include "toml_table.hpp"

#include <span>

namespace nimba::sim {

// Reads "vendor": the name of one of `vendors`, or any number.
uint16_t read_vendor(const TableReader& reader, std::span<const Vendor> vendors);

// The vendor among `vendors` with that number, or null.
const Vendor* find_vendor(std::span<const Vendor> vendors, uint16_t id);

// Reads "device".
uint16_t read_device_id(const TableReader& reader);

// Reads "bus_id".
PciAddress read_address(const TableReader& reader, Claims& claims);

// Reads "card", "render", "nodes", "unopenable" and "version".
DrmDevice read_drm(const TableReader& reader, Claims& claims, std::string_view driver);

}  // namespace nimba::sim
