// SPDX-License-Identifier: MIT
// The workers of the adapters that a command asks.
#pragma once

#include "tools/smi/exit_status.hpp"
#include "tools/smi/options.hpp"
#include "tools/smi/process/ask.hpp"
#include "tools/smi/process/diagnosis.hpp"
#include "tools/smi/worker/adapter_reading.hpp"
#include "tools/smi/worker/payload.hpp"

#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace nimba::smi {

// A worker for each of the slots, as yet without a question.
std::vector<WorkerProcess> start_workers(const Options& options,
                                         std::span<const SlotIdentity> slots);

// Switches off the usage accounting that lost workers have left on.
void tidy_up(const Options& options, std::span<const SlotIdentity> slots,
             std::span<const WorkerProcess> workers, std::span<const Reply> replies);

// The problems behind the remarks of a reading, and that the adapter is gone when it is.
std::vector<Problem> reading_problems(const Subject& subject, const AdapterReading& reading);

// Whether the worker found the adapter that discovery saw.
bool is_there(const Subject& subject, const AdapterReading& reading);

}  // namespace nimba::smi
