// SPDX-License-Identifier: MIT
#include "tools/smi/export/listen_address.hpp"

#include "tools/descriptor.hpp"
#include "tools/smi/decimal.hpp"

#include <arpa/inet.h>
#include <fmt/core.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <limits>

namespace nimba::smi::exporting {
namespace {

bool is_address(int family, const std::string& text)
{
    in6_addr binary{};
    return ::inet_pton(family, text.c_str(), &binary) == 1;
}

// `size` is that of the address in `storage`.
sockaddr_storage socket_address(const ListenAddress& address, socklen_t& size)
{
    sockaddr_storage storage{};
    if (address.is_v6) {
        auto& v6 = reinterpret_cast<sockaddr_in6&>(storage);
        v6.sin6_family = AF_INET6;
        v6.sin6_port = htons(address.port);
        ::inet_pton(AF_INET6, address.host.c_str(), &v6.sin6_addr);
        size = sizeof v6;
    } else {
        auto& v4 = reinterpret_cast<sockaddr_in&>(storage);
        v4.sin_family = AF_INET;
        v4.sin_port = htons(address.port);
        ::inet_pton(AF_INET, address.host.c_str(), &v4.sin_addr);
        size = sizeof v4;
    }
    return storage;
}

}  // namespace

std::optional<ListenAddress> parse_listen_address(std::string_view text)
{
    const auto colon = text.rfind(':');
    if (colon == std::string_view::npos) {
        return std::nullopt;
    }
    const auto port =
        parse_number<uint16_t>(text.substr(colon + 1), 0, std::numeric_limits<uint16_t>::max());
    std::string_view host = text.substr(0, colon);
    const bool is_v6 = host.starts_with('[') && host.ends_with(']');
    if (is_v6) {
        host = host.substr(1, host.size() - 2);
    }
    ListenAddress address{std::string{host}, port.value_or(0), is_v6};
    return port && is_address(is_v6 ? AF_INET6 : AF_INET, address.host)
               ? std::optional(std::move(address))
               : std::nullopt;
}

std::string text_of(const ListenAddress& address)
{
    return fmt::format(fmt::runtime(address.is_v6 ? "[{}]:{}" : "{}:{}"), address.host,
                       address.port);
}

int listening_fault(const ListenAddress& address)
{
    const tools::Descriptor socket{
        ::socket(address.is_v6 ? AF_INET6 : AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    if (!socket) {
        return errno;
    }
    const int on = 1;
    ::setsockopt(socket.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    socklen_t size = 0;
    const sockaddr_storage storage = socket_address(address, size);
    const auto* const bound = reinterpret_cast<const sockaddr*>(&storage);
    return ::bind(socket.get(), bound, size) == 0 && ::listen(socket.get(), 1) == 0 ? 0 : errno;
}

}  // namespace nimba::smi::exporting
