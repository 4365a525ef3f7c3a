// SPDX-License-Identifier: MIT
#include "tools/smi/export/server.hpp"

#include <CivetServer.h>

#include <fmt/core.h>
#include <prometheus/exposer.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <string>
#include <utility>
#include <vector>

namespace nimba::smi::exporting {
namespace {

// Each connection has one of so many threads until it is answered, also one that never asks.
// Further ones wait for a thread, and behind them others for being taken from the kernel.
constexpr const char* kThreads = "16";
constexpr const char* kWaitingConnections = "16";
constexpr const char* kBacklog = "16";

// A request and its headers, in bytes. A scraper's are a few hundred.
constexpr const char* kLongestRequest = "8192";

// For a request to arrive and for its answer to be taken.
constexpr const char* kTransferMilliseconds = "5000";

std::vector<std::string> server_options(const ListenAddress& address)
{
    return {"listening_ports", text_of(address), "num_threads", kThreads, "connection_queue",
            kWaitingConnections, "listen_backlog", kBacklog, "max_request_size", kLongestRequest,
            "request_timeout_ms", kTransferMilliseconds,
            // One that is kept open would hold its thread.
            "enable_keep_alive", "no"};
}

// Who collects learns nothing of the request but in its thread. The exposer lets one at a time
// collect, so that it may have come long before its turn.
thread_local std::chrono::steady_clock::time_point arrival;

// A scrape has no body. The server would wait for the end of one, be it a byte each second for
// ever, and hold a thread as long.
int begin_request(mg_connection* connection)
{
    arrival = std::chrono::steady_clock::now();
    constexpr int kServeIt = 0;
    constexpr int kContentTooLarge = 413;
    if (::mg_get_request_info(connection)->content_length <= 0 &&
        ::mg_get_header(connection, "Transfer-Encoding") == nullptr) {
        return kServeIt;
    }
    ::mg_send_http_error(connection, kContentTooLarge, "%s", "");
    return kContentTooLarge;
}

CivetCallbacks server_callbacks()
{
    CivetCallbacks callbacks;
    callbacks.begin_request = begin_request;
    return callbacks;
}

const char* listening_advice(int error)
{
    switch (error) {
        case EADDRINUSE:
            return "; choose another with --listen";
        case EADDRNOTAVAIL:
            return "; no interface of this machine has it";
        case EAFNOSUPPORT:
            return "; this machine has no IPv6";
        default:
            return "";
    }
}

Problem listening_problem(const ListenAddress& address, int error)
{
    const bool denied = error == EACCES || error == EPERM;
    return {denied ? ExitStatus::kNoPermission : ExitStatus::kFailed, std::nullopt, std::nullopt,
            fmt::format("cannot listen on {}: {}{}", text_of(address), std::strerror(error),
                        listening_advice(error))};
}

}  // namespace

Server::Server(std::unique_ptr<prometheus::Exposer> exposer,
               std::shared_ptr<prometheus::Collectable> collectable)
    : collectable_{std::move(collectable)}, exposer_{std::move(exposer)}
{
    exposer_->RegisterCollectable(collectable_);
}

Server::Server(Server&& other) noexcept = default;

Server::~Server() = default;

std::chrono::steady_clock::time_point arrival_of_request()
{
    return arrival;
}

uint16_t Server::port() const
{
    return static_cast<uint16_t>(exposer_->GetListeningPorts().front());
}

std::variant<Server, Problem> serve(const ListenAddress& address,
                                    std::shared_ptr<prometheus::Collectable> collectable)
{
    // The server does not say what kept it from listening.
    if (const int error = listening_fault(address); error != 0) {
        return listening_problem(address, error);
    }
    try {
        const CivetCallbacks callbacks = server_callbacks();
        return Server{std::make_unique<prometheus::Exposer>(server_options(address), &callbacks),
                      std::move(collectable)};
    } catch (const std::exception&) {
        return listening_problem(address, address.is_v6 ? EAFNOSUPPORT : EADDRINUSE);
    }
}

}  // namespace nimba::smi::exporting
