// SPDX-License-Identifier: MIT
// What the tool knows of an adapter: the model that every face renders.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace nimba::smi {

// A locally unique identifier, made from the PCI location.
struct Luid {
    uint32_t low = 0;   // PCI domain
    uint32_t high = 0;  // bus * 65536 + device * 256 + function

    bool operator==(const Luid&) const = default;
};

enum class DriverKind { kUnknown, kVa, kLegacy };

// One adapter of the product. A foreign GPU that takes the last slot's name hides it; then there is
// none.
struct Adapter {
    int slot = 0;
    std::optional<std::string> name;
    std::string bus_id;  // "dddd:bb:dd.f"
    std::optional<int> card;
    uint32_t vendor_id = 0;
    std::optional<uint32_t> device_id;
    DriverKind driver = DriverKind::kUnknown;
    Luid luid;

    bool operator==(const Adapter&) const = default;
};

// The one GPU of another vendor that discovery notes.
struct ForeignGpu {
    std::string name;
    std::string bus_id;
    std::optional<int> card;
    uint32_t vendor_id = 0;
    uint32_t device_id = 0;
    Luid luid;

    bool operator==(const ForeignGpu&) const = default;
};

}  // namespace nimba::smi
