// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/worker/session.hpp"

#include <string_view>

namespace nimba::smi {

// The requests that workers know.
inline constexpr std::string_view kDiscoverRequest = "discover";
inline constexpr std::string_view kDescribeRequest = "describe";
inline constexpr std::string_view kVersionRequest = "version";
inline constexpr std::string_view kMemoryRequest = "memory";
inline constexpr std::string_view kLeaksRequest = "leaks";
inline constexpr std::string_view kTidyRequest = "tidy";

// Answers one request. A failure tells what is wrong with the library; what the library throws
// passes through.
Message answer_request(Session& session, std::string_view request);

}  // namespace nimba::smi
