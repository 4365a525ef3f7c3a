// SPDX-License-Identifier: MIT
// Where the exporter listens.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace nimba::smi::exporting {

struct ListenAddress {
    std::string host;   // a numeric address; one of IPv6 without brackets
    uint16_t port = 0;  // 0: any that is free
    bool is_v6 = false;

    bool operator==(const ListenAddress&) const = default;
};

inline constexpr uint16_t kDefaultPort = 9835;

// "127.0.0.1:9835" or "[::1]:9835". Nothing for other texts, names of hosts included.
std::optional<ListenAddress> parse_listen_address(std::string_view text);

// The text that parse_listen_address takes.
std::string text_of(const ListenAddress& address);

// Tries to listen there. Returns 0, or the error number.
int listening_fault(const ListenAddress& address);

}  // namespace nimba::smi::exporting
