// SPDX-License-Identifier: MIT
#include "tools/smi/process/ask.hpp"

#include <poll.h>

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace nimba::smi {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// A worker that hung up is on its way out.
constexpr milliseconds kLeave{1000};

// One worker's way to its reply.
class Exchange final {
  public:
    Exchange(WorkerProcess& worker, milliseconds timeout)
        : worker_{&worker}, timeout_{timeout}, deadline_{Clock::now() + timeout}
    {
    }

    [[nodiscard]] bool open() const { return !reply_; }
    [[nodiscard]] int channel() const { return worker_->channel(); }
    [[nodiscard]] Clock::time_point deadline() const { return deadline_; }
    [[nodiscard]] Reply take_reply() { return *std::move(reply_); }

    // The channel is readable.
    void receive()
    {
        const bool connected = worker_->receive();
        while (open()) {
            const auto line = worker_->next_line();
            if (!line) {
                break;
            }
            take(*line);
        }
        if (open() && !connected) {
            take_end();
        }
    }

    void expire()
    {
        worker_->kill();
        reply_ = Lost{call_, no_answer_within(timeout_), true};
    }

  private:
    void take(const std::string& line)
    {
        auto message = decode(line);
        if (!message) {
            worker_->kill();
            reply_ = Lost{call_, "it sent something that is no answer"};
        } else if (auto* const entering = std::get_if<Entering>(&*message)) {
            call_ = std::move(entering->call);
            deadline_ = Clock::now() + timeout_;
        } else if (auto* const answer = std::get_if<Answer>(&*message)) {
            reply_ = std::move(*answer);
        } else {
            reply_ = std::get<Failure>(*std::move(message));
        }
    }

    // The worker hung up; it is ending or dead.
    void take_end()
    {
        const auto end = worker_->wait(kLeave);
        if (!end) {
            worker_->kill();
        }
        reply_ = Lost{call_, end.value_or("it hung up")};
    }

    WorkerProcess* worker_;
    milliseconds timeout_;
    Clock::time_point deadline_;
    std::string call_{kStartCall};
    std::optional<Reply> reply_;
};

// Waits until a channel is readable or a deadline is reached, and serves the exchanges concerned.
void serve_next(std::span<Exchange*> pending)
{
    std::vector<pollfd> channels;
    for (const Exchange* exchange : pending) {
        channels.push_back({exchange->channel(), POLLIN, 0});
    }
    const Exchange* const first = *std::ranges::min_element(
        pending, {}, [](const Exchange* exchange) { return exchange->deadline(); });
    const auto left = std::chrono::ceil<milliseconds>(first->deadline() - Clock::now());
    const auto patience = static_cast<int>(std::max(left, milliseconds{0}).count());
    if (::poll(channels.data(), channels.size(), patience) < 0 && errno != EINTR) {
        throw std::system_error{errno, std::generic_category(), "cannot wait for the workers"};
    }
    for (std::size_t i = 0; i < pending.size(); ++i) {
        if (channels[i].revents != 0) {
            pending[i]->receive();
        } else if (pending[i]->deadline() <= Clock::now()) {
            pending[i]->expire();
        }
    }
}

}  // namespace

std::vector<Reply> ask_all(std::span<WorkerProcess> workers, std::string_view request,
                           milliseconds timeout)
{
    std::vector<Exchange> exchanges;
    for (WorkerProcess& worker : workers) {
        worker.send(request);
        exchanges.emplace_back(worker, timeout);
    }
    while (true) {
        std::vector<Exchange*> pending;
        for (Exchange& exchange : exchanges) {
            if (exchange.open()) {
                pending.push_back(&exchange);
            }
        }
        if (pending.empty()) {
            break;
        }
        serve_next(pending);
    }
    std::vector<Reply> replies;
    replies.reserve(exchanges.size());
    for (Exchange& exchange : exchanges) {
        replies.push_back(exchange.take_reply());
    }
    return replies;
}

std::string no_answer_within(milliseconds timeout)
{
    return fmt::format("no answer within {:g} s", std::chrono::duration<double>(timeout).count());
}

}  // namespace nimba::smi
