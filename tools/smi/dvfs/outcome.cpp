// SPDX-License-Identifier: MIT
#include "tools/smi/dvfs/outcome.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <iterator>

namespace nimba::smi {

Verdict judge(int64_t asked, const std::optional<int64_t>& before,
              const std::optional<int64_t>& after)
{
    if (!after) {
        return Verdict::kUnknown;
    }
    if (*after == asked) {
        return before == asked ? Verdict::kUnchanged : Verdict::kAccepted;
    }
    return after == before ? Verdict::kRejected : Verdict::kChanged;
}

std::string_view word_of(Verdict verdict)
{
    switch (verdict) {
        case Verdict::kAccepted:
            return "accepted";
        case Verdict::kUnchanged:
            return "unchanged";
        case Verdict::kRejected:
            return "rejected";
        case Verdict::kChanged:
            return "changed";
        case Verdict::kUnknown:
            break;
    }
    return "unknown";
}

std::string sentence_of(Verdict verdict, const std::string& after)
{
    switch (verdict) {
        case Verdict::kAccepted:
            return "accepted";
        case Verdict::kUnchanged:
            return "unchanged: already so";
        case Verdict::kRejected:
            return "rejected: still " + after;
        case Verdict::kChanged:
            return fmt::format("changed to {} by the driver", after);
        case Verdict::kUnknown:
            break;
    }
    return "unknown: it cannot be read back";
}

std::vector<Outcome> outcomes_of(std::span<const Assignment> assignments, const DvfsReading& before,
                                 const DvfsReading& after)
{
    std::vector<Outcome> outcomes;
    for (const auto& [field, value] : assignments) {
        const auto was = value_of(before, *field);
        const auto is = value_of(after, *field);
        outcomes.push_back({field, value, was, is, judge(value, was, is)});
    }
    return outcomes;
}

std::vector<Assignment> changes(std::span<const Assignment> assignments, const DvfsReading& reading)
{
    std::vector<Assignment> result;
    std::ranges::copy_if(assignments, std::back_inserter(result), [&](const Assignment& a) {
        return value_of(reading, *a.field) != a.value;
    });
    return result;
}

}  // namespace nimba::smi
