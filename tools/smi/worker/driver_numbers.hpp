// SPDX-License-Identifier: MIT
// Calls of the library that read the driver's allocations and contexts, and why they failed.
#pragma once

#include "tools/smi/worker/message.hpp"
#include "tools/smi/worker/session.hpp"

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace nimba::smi {

inline constexpr const char* kAllocationNumber = "an allocation with a handle or device";
inline constexpr const char* kContextNumber = "a device context with a handle";

// A number of the driver's that the library cannot take. It changed nothing before it threw.
Failure bad_number(const char* call, const char* what, const char* fault);

// Makes a call that takes numbers from the driver's nodes. Returns what is wrong with one of them.
template <typename Function>
std::optional<Failure> with_numbers(const char* call, const char* what, Function&& function)
{
    try {
        std::forward<Function>(function)();
        return std::nullopt;
    } catch (const std::invalid_argument&) {
        return bad_number(call, what, "without digits");
    } catch (const std::out_of_range&) {
        return bad_number(call, what, "beyond 32 bits");
    }
}

// What keeps <directory>/<entry>/<node> from being read, after a call that could not. `what`:
// "allocations".
Failure reading_failure(Session& session, const char* call, const std::string& directory,
                        std::string_view node, const char* what);

// The same for the allocations in an adapter's debug directory.
Failure no_allocations(Session& session, const char* call, const std::string& debug_directory);

// The time that reading them may take beyond the usual.
std::chrono::milliseconds reading_time(Session& session, const std::string& debug_directory);

}  // namespace nimba::smi
