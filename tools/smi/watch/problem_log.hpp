// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/exit_status.hpp"

#include <cstdint>
#include <vector>

namespace nimba::smi {

// Whether two problems are the same but for numbers in their messages, such as that of an entry or
// of all entries.
bool is_alike(const Problem& a, const Problem& b);

// The problems of many snapshots, each told once.
class ProblemLog final {
  public:
    // A problem of one snapshot, which may come again in others: it is told as it came first.
    void add_to_snapshot(const Problem& problem);

    // A problem that ended the snapshots of an adapter at the one with this number, from 1 on.
    void add_at_snapshot(Problem problem, uint64_t number);

    // All of them; those that did not come in all of the run's `snapshots` say so.
    [[nodiscard]] std::vector<Problem> problems(uint64_t snapshots) const;

  private:
    struct Repeated {
        Problem problem;
        uint64_t times = 0;
    };
    struct Final {
        Problem problem;
        uint64_t number = 0;
    };

    std::vector<Repeated> repeated_;
    std::vector<Final> final_;
};

}  // namespace nimba::smi
