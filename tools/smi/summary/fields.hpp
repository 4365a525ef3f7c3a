// SPDX-License-Identifier: MIT
// The fields of both summaries: what each is called, where it comes from, and what its unit is.
#pragma once

#include "tools/smi/snapshot/adapter_state.hpp"
#include "tools/smi/text/document.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace nimba::smi {

struct Resolution {
    uint64_t width = 0;
    uint64_t height = 0;
    uint64_t refresh_hz = 0;

    bool operator==(const Resolution&) const = default;
};

// Nothing: the field could not be read.
using FieldValue =
    std::optional<std::variant<int64_t, std::string, Resolution, std::vector<std::string>>>;

struct SummaryField {
    std::string key;
    std::string unit;       // "driver's": the driver's own; empty for names and mere numbers
    std::string source;     // "jw_info/eclk", "/proc/gpuinfo_0: Driver Version", "dmidecode"
    bool is_clock = false;  // one of ClockReading
    FieldValue value;
};

// All fields of an adapter, in the order of the records.
std::vector<SummaryField> summary_fields(const AdapterState& adapter);

// "1.2.a" of a driver's packed version, and "8.f.0.1c" of a firmware's: in hexadecimal digits, as
// the driver prints them.
std::string driver_version_text(uint64_t packed);
std::string firmware_version_text(uint64_t packed);

// "550", "1920x1080@60", "HDMI, DP"; `none` without a value.
std::string field_text(const FieldValue& value, const std::string& none);

// A number, a text, an object with "width", "height" and "refresh_hz", an array of texts, or null.
Document field_json(const FieldValue& value);

// The fields that no other part of an adapter's document has, as an object.
Document summary_json(const AdapterState& adapter);

}  // namespace nimba::smi
