// SPDX-License-Identifier: MIT
#include "tools/smi/worker/driver_numbers.hpp"

#include "tools/smi/worker/driver_directory.hpp"

#include <fmt/core.h>

namespace nimba::smi {
namespace {

// Reading takes its time for each allocation, and up to ten passes.
constexpr std::chrono::milliseconds kTimePerAllocation{1};

}  // namespace

Failure bad_number(const char* call, const char* what, const char* fault)
{
    return {ExitStatus::kNoAdapter, call,
            fmt::format("the driver shows {} {}, which the library cannot read", what, fault)};
}

Failure reading_failure(Session& session, const char* call, const std::string& directory,
                        std::string_view node, const char* what)
{
    const auto fault =
        session.call("open " + directory, [&] { return first_fault(directory, node); });
    const FaultSentence sentence = describe_fault(fault, directory, what);
    return {sentence.status, call, sentence.text};
}

Failure no_allocations(Session& session, const char* call, const std::string& debug_directory)
{
    return reading_failure(session, call, debug_directory + "/allocations", "info", "allocations");
}

std::chrono::milliseconds reading_time(Session& session, const std::string& debug_directory)
{
    const std::string directory = debug_directory + "/allocations";
    const auto count = session.call("open " + directory, [&] { return entries_in(directory); });
    return kTimePerAllocation * count;
}

}  // namespace nimba::smi
