// SPDX-License-Identifier: MIT
#include "tools/smi/exit_status.hpp"

#include <algorithm>
#include <array>

namespace nimba::smi {
namespace {

constexpr std::array kGravestFirst{
    ExitStatus::kFailed,     ExitStatus::kUsage,    ExitStatus::kNoLibrary,
    ExitStatus::kWorkerLost, ExitStatus::kNoLibdrm, ExitStatus::kNoPermission,
    ExitStatus::kNoAdapter,  ExitStatus::kNotTaken, ExitStatus::kGrowth,
};

}  // namespace

ExitStatus overall_status(std::span<const Problem> problems)
{
    for (const ExitStatus status : kGravestFirst) {
        if (std::ranges::any_of(problems, [&](const Problem& p) { return p.status == status; })) {
            return status;
        }
    }
    return ExitStatus::kOk;
}

}  // namespace nimba::smi
