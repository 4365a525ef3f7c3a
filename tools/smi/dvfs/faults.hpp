// SPDX-License-Identifier: MIT
// Why settings cannot be read or written, in words for the user.
#pragma once

#include "tools/smi/dvfs/assignment.hpp"
#include "tools/smi/dvfs/reading.hpp"
#include "tools/smi/exit_status.hpp"
#include "tools/smi/process/diagnosis.hpp"

#include <span>
#include <vector>

namespace nimba::smi {

// Why a node cannot be read; nothing when it can, and when it is not there, which is no fault.
std::optional<Problem> reading_problem(const Subject& subject, const NodeAccess& access);

// Why a node cannot be written.
std::optional<Problem> writing_problem(const Subject& subject, const NodeAccess& access);

// Why nodes of the fields cannot be read or tell nothing, once for each path; and that the driver
// has no node for any setting, when that is so.
std::vector<Problem> reading_problems(const Subject& subject, const DvfsReading& reading,
                                      std::span<const DvfsField* const> fields);

// Why the assignments cannot be made at all: fields that the driver does not give.
std::vector<Problem> missing_fields(const Subject& subject, const DvfsReading& reading,
                                    std::span<const Assignment> assignments);

// Why nodes of the assignments cannot be written, once for each path.
std::vector<Problem> writing_problems(const Subject& subject, const DvfsReading& reading,
                                      std::span<const Assignment> assignments);

}  // namespace nimba::smi
