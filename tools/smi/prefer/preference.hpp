// SPDX-License-Identifier: MIT
// GPU preferences, and how they travel between the tool and its workers.
#pragma once

#include "tools/smi/worker/payload_value.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nimba::smi {

struct PciLocation {
    uint16_t domain = 0;
    uint8_t bus = 0;
    uint8_t device = 0;
    uint8_t function = 0;

    bool operator==(const PciLocation&) const = default;
};

// The location in a PCI bus id "dddd:bb:dd.f"; nothing when a preference has no room for it.
std::optional<PciLocation> location_in(const std::string& bus_id);

// "0000:01:00.0"
std::string bus_id_text(const PciLocation& location);

// Which GPU an application should use. Its texts are bytes, UTF-8 or not.
struct Preference {
    std::string application{};  // the file name that is the key
    std::string path{};         // of the executable
    int32_t value = 1;
    std::string gpu_name{};
    PciLocation gpu{};

    bool operator==(const Preference&) const = default;
};

// What workers are asked about preferences.
struct PreferenceRequest {
    std::string home{};       // HOME for the library, which finds the preference file by it
    Preference preference{};  // to set, or of whose path the application is to be removed

    bool operator==(const PreferenceRequest&) const = default;
};

// Answer to the requests about preferences: all that the library holds then, in file order.
struct PreferenceList {
    std::vector<Preference> preferences{};

    bool operator==(const PreferenceList&) const = default;
};

// "NAME ARGUMENTS", and what the arguments were; nothing when they are something else.
std::string request_text(std::string_view name, const PreferenceRequest& request);
std::optional<PreferenceRequest> preference_request_in(std::string_view arguments);

}  // namespace nimba::smi
