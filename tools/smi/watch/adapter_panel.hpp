// SPDX-License-Identifier: MIT
// Adapters that are asked the same again and again.
#pragma once

#include "tools/smi/exit_status.hpp"
#include "tools/smi/memory/ask_adapters.hpp"
#include "tools/smi/options.hpp"
#include "tools/smi/process/ask.hpp"
#include "tools/smi/process/diagnosis.hpp"
#include "tools/smi/worker/payload.hpp"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string_view>
#include <utility>
#include <vector>

namespace nimba::smi {

template <typename Reading>
struct AdapterAnswer {
    SlotIdentity adapter;
    Reading reading;
};

// What one round of questions brought.
template <typename Reading>
struct Round {
    std::vector<AdapterAnswer<Reading>> answers;  // of the adapters that are there, in slot order
    std::vector<Problem> problems;                // that need not be there the next time
    std::vector<Problem> losses;                  // of adapters whose worker is lost
    bool interrupted = false;                     // by a stop signal: answers may be missing
};

// What becomes of an adapter whose worker is lost.
enum class LostWorkers : uint8_t {
    kLeftOut,   // it is not asked any more
    kReplaced,  // it is asked again in the next round, by a new worker
};

// A worker for each adapter. One that cannot be read is asked again in the next round, by a new
// worker if the old one cannot find it again; what becomes of one whose worker is lost is chosen.
class AdapterPanel final {
  public:
    AdapterPanel(const Options& options, std::vector<SlotIdentity> adapters,
                 LostWorkers lost = LostWorkers::kLeftOut);

    // No adapter is left.
    [[nodiscard]] bool empty() const;

    // `stop`: see Patience.
    template <typename Reading>
    Round<Reading> ask(std::string_view request, int stop)
    {
        renew();
        Round<Reading> round;
        const std::vector<Reply> replies = ask_all_adapters(request, stop);
        for (std::size_t i = 0; i < replies.size(); ++i) {
            fates_[i] = take(adapters_[i], replies[i], round);
        }
        return round;
    }

  private:
    // What becomes of a worker in the round after its reply.
    enum class Fate : uint8_t { kStays, kReplaced, kLeftOut };

    template <typename Reading>
    Fate take(const SlotIdentity& adapter, const Reply& reply, Round<Reading>& round) const
    {
        if (is_interrupted(reply)) {
            round.interrupted = true;
            return Fate::kLeftOut;
        }
        const Subject subject = adapter_subject(adapter);
        std::vector<Problem> problems;
        auto reading = accept<Reading>(subject, reply, problems);
        if (!reading) {
            const bool lost = problems.front().status == ExitStatus::kWorkerLost;
            std::ranges::move(problems, std::back_inserter(lost ? round.losses : round.problems));
            return lost ? fate_of_lost() : Fate::kStays;
        }
        std::ranges::move(reading_problems(subject, *reading), std::back_inserter(round.problems));
        const bool there = is_there(subject, *reading);
        const bool useless = !there || reading->stale;
        if (there) {
            round.answers.push_back({adapter, *std::move(reading)});
        }
        return useless ? Fate::kReplaced : Fate::kStays;
    }

    // The user wanted to end before the worker answered.
    static bool is_interrupted(const Reply& reply);

    [[nodiscard]] Fate fate_of_lost() const
    {
        return lost_ == LostWorkers::kReplaced ? Fate::kReplaced : Fate::kLeftOut;
    }

    std::vector<Reply> ask_all_adapters(std::string_view request, int stop);
    void renew();

    const Options& options_;
    LostWorkers lost_;
    std::vector<SlotIdentity> adapters_;
    std::vector<WorkerProcess> workers_;  // in their order
    std::vector<Fate> fates_;             // of the workers
};

}  // namespace nimba::smi
