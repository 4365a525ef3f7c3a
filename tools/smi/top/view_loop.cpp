// SPDX-License-Identifier: MIT
#include "tools/smi/top/view_loop.hpp"

#include "tools/smi/monitor/output.hpp"
#include "tools/smi/text/colour.hpp"
#include "tools/smi/top/sampler.hpp"
#include "tools/smi/top/screen.hpp"
#include "tools/smi/top/state.hpp"
#include "tools/smi/top/terminal_signals.hpp"
#include "tools/smi/top/view.hpp"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <utility>

namespace nimba::smi::top {
namespace {

// How long the age of what is shown may be wrong.
constexpr int kRefresh = 500;  // milliseconds

Settings settings_for(const TopOptions& options)
{
    const bool ascii = options.ascii || !shows_utf8();
    // The fonts of the kernel's own terminal have no dots.
    const char* const term = std::getenv("TERM");
    const bool has_dots = term == nullptr || std::string_view{term} != "linux";
    return {options.interval,
            ascii      ? Marks::kAscii
            : has_dots ? Marks::kBraille
                       : Marks::kBlocks,
            ascii};
}

class ViewLoop final {
  public:
    explicit ViewLoop(const Options& options)
        : options_{options},
          state_{settings_for(options.top_view), Clock::now()},
          sampler_{options, options.top_view.interval}
    {
    }

    std::vector<Problem> run()
    {
        screen_.emplace(is_colour_wanted(STDOUT_FILENO));
        bool goes_on = true;
        while (goes_on) {
            screen_->show(draw(state_, screen_->size(), Clock::now()));
            goes_on = wait() && take_keys() && take_snapshots();
        }
        // The terminal is given back before the workers are waited for.
        screen_.reset();
        return std::move(problems_);
    }

  private:
    // Waits until there is something to do, and does what signals ask for. Returns false when one
    // ends the view, and when the terminal is gone.
    bool wait()
    {
        std::array<pollfd, 3> events{{{STDIN_FILENO, POLLIN, 0},
                                      {signals_.descriptor(), POLLIN, 0},
                                      {sampler_.descriptor(), POLLIN, 0}}};
        ::poll(events.data(), events.size(), kRefresh);
        constexpr short kGone = POLLHUP | POLLERR | POLLNVAL;
        return (events[0].revents & kGone) == 0 && take_signals();
    }

    bool take_signals()
    {
        while (const auto signal = signals_.next()) {
            switch (*signal) {
                case SIGTSTP:
                    screen_->leave();
                    TerminalSignals::stop_process();
                    screen_->enter();
                    break;
                case SIGCONT:
                    screen_->enter();
                    break;
                case SIGWINCH:
                    screen_->resize();
                    break;
                default:
                    return false;
            }
        }
        return true;
    }

    // Returns false when the user ends the view.
    bool take_keys()
    {
        while (const auto key = screen_->key()) {
            state_.press(*key);
        }
        if (state_.take_redraw()) {
            screen_->forget();
        }
        sampler_.set_interval(state_.settings().interval);
        sampler_.set_paused(state_.is_paused());
        return !state_.is_over();
    }

    // Returns false when there is nothing to show, and when there were as many as there should be.
    bool take_snapshots()
    {
        const auto& count = options_.top_view.count;
        while (auto snapshot = sampler_.next()) {
            const bool has_none = ++taken_ == 1 && snapshot->adapters.empty();
            if (has_none || count) {
                keep(snapshot->problems);
            }
            if (has_none) {
                return false;
            }
            state_.take(*std::move(snapshot), Clock::now());
            if (count && taken_ >= *count) {
                screen_->show(draw(state_, screen_->size(), Clock::now()));
                return false;
            }
        }
        return true;
    }

    void keep(const std::vector<Problem>& problems)
    {
        for (const Problem& problem : problems) {
            add_unless_known(problems_, problem);
        }
    }

    const Options& options_;
    State state_;
    TerminalSignals signals_;
    Sampler sampler_;  // its thread holds the signals back as this one does
    std::optional<Screen> screen_;
    uint64_t taken_ = 0;
    std::vector<Problem> problems_;
};

}  // namespace

std::vector<Problem> show_view(const Options& options)
{
    return ViewLoop{options}.run();
}

}  // namespace nimba::smi::top
