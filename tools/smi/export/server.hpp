// SPDX-License-Identifier: MIT
// The HTTP face.
#pragma once

#include "tools/smi/exit_status.hpp"
#include "tools/smi/export/listen_address.hpp"

#include <prometheus/collectable.h>

#include <chrono>
#include <memory>
#include <optional>
#include <variant>

namespace prometheus {
class Exposer;
}

namespace nimba::smi::exporting {

// Serves what a collectable tells under /metrics as long as it lives.
class Server final {
  public:
    Server(std::unique_ptr<prometheus::Exposer> exposer,
           std::shared_ptr<prometheus::Collectable> collectable);
    Server(Server&& other) noexcept;
    Server& operator=(Server&&) = delete;

    // Waits for the scrapes that are under way.
    ~Server();

    // The port that was chosen for 0.
    [[nodiscard]] uint16_t port() const;

  private:
    std::shared_ptr<prometheus::Collectable> collectable_;
    std::unique_ptr<prometheus::Exposer> exposer_;
};

// When the request came that this thread of a server answers.
std::chrono::steady_clock::time_point arrival_of_request();

// Why nobody can listen there is a problem.
std::variant<Server, Problem> serve(const ListenAddress& address,
                                    std::shared_ptr<prometheus::Collectable> collectable);

}  // namespace nimba::smi::exporting
