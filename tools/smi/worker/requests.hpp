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
inline constexpr std::string_view kMemorySampleRequest = "memory-sample";
inline constexpr std::string_view kLeaksRequest = "leaks";
inline constexpr std::string_view kTidyRequest = "tidy";
inline constexpr std::string_view kPageTablesRequest = "pagetables";
inline constexpr std::string_view kSummaryRequest = "summary";
inline constexpr std::string_view kSegmentsRequest = "segments";
inline constexpr std::string_view kClocksRequest = "clocks";
inline constexpr std::string_view kSensorsRequest = "sensors";
inline constexpr std::string_view kCountersRequest = "counters";
inline constexpr std::string_view kDvfsRequest = "dvfs";
inline constexpr std::string_view kFlagRequest = "flag";

// These have arguments behind a blank: see page_table_requests.hpp.
inline constexpr std::string_view kTableEntriesRequest = "table-entries";
inline constexpr std::string_view kPagesRequest = "pages";
inline constexpr std::string_view kVmAllocationsRequest = "vm-allocations";

// So have these: see dvfs_requests.hpp.
inline constexpr std::string_view kDvfsWriteRequest = "dvfs-write";
inline constexpr std::string_view kFlagWriteRequest = "flag-write";

// And these: see prefer_requests.hpp.
inline constexpr std::string_view kPreferGetRequest = "prefer-get";
inline constexpr std::string_view kPreferSetRequest = "prefer-set";
inline constexpr std::string_view kPreferRemoveRequest = "prefer-remove";

// These, too: see doctor_requests.hpp.
inline constexpr std::string_view kDoctorMachineRequest = "doctor-machine";
inline constexpr std::string_view kDoctorAdapterRequest = "doctor-adapter";

// Answers one request. A failure tells what is wrong with the library; what the library throws
// passes through.
Message answer_request(Session& session, std::string_view request);

}  // namespace nimba::smi
