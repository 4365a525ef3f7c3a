// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/worker/message.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace nimba::smi {

// Sends all of `bytes` on a connected socket, without a signal when the peer is gone.
// Returns 0, or the error number.
int send_all(int socket, std::string_view bytes);

// A worker's end of the connection: it waits as long as it takes.
class Channel final {
  public:
    // The socket stays the caller's.
    explicit Channel(int socket) : socket_{socket} {}

    // The next line from the tool; nothing once the tool has hung up.
    std::optional<std::string> receive_line();

    // A message that cannot be delivered is dropped: the tool is gone, and the next receive says
    // so.
    void send(const Message& message) const;

  private:
    int socket_;
    LineBuffer lines_;
};

}  // namespace nimba::smi
