// SPDX-License-Identifier: MIT
#include "tools/smi/worker/channel.hpp"

#include <sys/socket.h>

#include <array>
#include <cerrno>

namespace nimba::smi {

int send_all(int socket, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t sent = ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(sent));
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

std::optional<std::string> Channel::receive_line()
{
    std::array<char, 4096> bytes{};
    while (true) {
        if (auto line = lines_.next_line()) {
            return line;
        }
        const ssize_t received = ::recv(socket_, bytes.data(), bytes.size(), 0);
        if (received > 0) {
            lines_.append({bytes.data(), static_cast<std::size_t>(received)});
        } else if (received == 0 || errno != EINTR) {
            return std::nullopt;
        }
    }
}

void Channel::send(const Message& message) const
{
    static_cast<void>(send_all(socket_, encode(message)));
}

}  // namespace nimba::smi
