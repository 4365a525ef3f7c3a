// SPDX-License-Identifier: MIT
// The checks of "doctor": what each found, and how to mend it.
#pragma once

#include "tools/smi/exit_status.hpp"
#include "tools/smi/worker/payload.hpp"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace nimba::smi {

enum class CheckResult : uint8_t {
    kOk,
    kNote,     // things work without it; something is lost
    kFail,     // it matters
    kSkipped,  // an earlier check failed
};

struct Check {
    std::string id;  // for scripts: words of small letters with "_" between them; stays what it is
    CheckResult result = CheckResult::kOk;
    std::string found;
    std::string remedy{};                  // of a note and a failure: one sentence
    ExitStatus status = ExitStatus::kOk;   // of a failure
    std::optional<std::string> adapter{};  // bus id, when it concerns one

    bool operator==(const Check&) const = default;
};

Check passed(std::string id, std::string found);
Check noted(std::string id, std::string found, std::string remedy);
Check failed(std::string id, ExitStatus status, std::string found, std::string remedy);

// The check was not made, because `cause` failed or was itself skipped for another.
Check skipped(std::string id, const Check& cause);

// Whether the check neither passed nor was made: others that need it are skipped.
bool is_obstacle(const Check& check);

// The first of the checks that is an obstacle; null when there is none.
const Check* first_obstacle(std::span<const Check> checks);

// Checks that belong together.
enum class CheckGroup : uint8_t { kMachine, kLibrary, kAdapter, kUser };

struct Section {
    CheckGroup group = CheckGroup::kMachine;
    std::optional<SlotIdentity> adapter;  // of an adapter's checks
    std::vector<Check> checks;
};

// The failures as problems.
std::vector<Problem> problems_in(std::span<const Section> sections);

}  // namespace nimba::smi
