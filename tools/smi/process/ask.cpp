// SPDX-License-Identifier: MIT
#include "tools/smi/process/ask.hpp"

#include <poll.h>

#include <fmt/core.h>

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

// What a worker still gets when the user wants to end.
constexpr milliseconds kLastPatience{1000};

// One worker's way to its reply.
class Exchange final {
  public:
    Exchange(WorkerProcess& worker, milliseconds timeout)
        : worker_{&worker}, timeout_{timeout}, patience_{timeout}, deadline_{Clock::now() + timeout}
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
        reply_ = Lost{call_, stopping_ ? kInterrupted : no_answer_within(patience_), true,
                      worker_->last_complaint()};
    }

    // The user wants to end: from here on no call gets more time.
    void hurry(Clock::time_point end)
    {
        stopping_ = true;
        deadline_ = std::min(deadline_, end);
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
            patience_ = timeout_ + milliseconds{entering->extra_ms};
            if (!stopping_) {
                deadline_ = Clock::now() + patience_;
            }
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
        reply_ = Lost{call_, end.value_or("it hung up"), false, worker_->last_complaint()};
    }

    WorkerProcess* worker_;
    milliseconds timeout_;   // for any call
    milliseconds patience_;  // for the call that the worker is in
    Clock::time_point deadline_;
    bool stopping_ = false;
    std::string call_{kStartCall};
    std::optional<Reply> reply_;
};

// Waits until a channel is readable, a deadline is reached or `stop` is readable, and serves the
// exchanges concerned. Returns whether `stop` is readable.
bool serve_next(std::span<Exchange*> pending, int stop)
{
    std::vector<pollfd> channels;
    for (const Exchange* exchange : pending) {
        channels.push_back({exchange->channel(), POLLIN, 0});
    }
    channels.push_back({stop, POLLIN, 0});
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
    return channels.back().revents != 0;
}

std::vector<Exchange*> open_ones(std::span<Exchange> exchanges)
{
    std::vector<Exchange*> open;
    for (Exchange& exchange : exchanges) {
        if (exchange.open()) {
            open.push_back(&exchange);
        }
    }
    return open;
}

}  // namespace

std::vector<Reply> ask_all(std::span<WorkerProcess> workers, std::string_view request,
                           Patience patience)
{
    std::vector<Exchange> exchanges;
    for (WorkerProcess& worker : workers) {
        worker.send(request);
        exchanges.emplace_back(worker, patience.timeout);
    }
    int stop = patience.stop;
    for (auto pending = open_ones(exchanges); !pending.empty(); pending = open_ones(exchanges)) {
        if (serve_next(pending, stop)) {
            const auto end = Clock::now() + kLastPatience;
            std::ranges::for_each(exchanges, [&](Exchange& exchange) { exchange.hurry(end); });
            stop = -1;
        }
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
