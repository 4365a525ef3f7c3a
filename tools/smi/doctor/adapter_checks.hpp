// SPDX-License-Identifier: MIT
// The checks of one adapter, from what its workers found out. Pure functions.
#pragma once

#include "tools/smi/adapter.hpp"
#include "tools/smi/doctor/check.hpp"
#include "tools/smi/doctor/facts.hpp"
#include "tools/smi/process/ask.hpp"
#include "tools/smi/process/diagnosis.hpp"

#include <string>
#include <vector>

namespace nimba::smi {

// The ids, for checks that are not made.
inline constexpr const char* kDriverCheck = "driver";
inline constexpr const char* kKernelInterfaceCheck = "kernel_interface";
inline constexpr const char* kDebugDirectoryCheck = "debug_directory";
inline constexpr const char* kInfoDirectoryCheck = "info_directory";
inline constexpr const char* kHwmonCheck = "hwmon";
inline constexpr const char* kProcFileCheck = "proc_file";

// The adapter answers, and what kind of driver it has.
Check driver_check(const Subject& subject, const Reply& reply, const Check& debugfs);

// The library that the driver's package brings for the chip, and what it is good for.
std::vector<Check> kernel_interface_checks(const KernelInterfaceFacts& facts);

// The directory of the adapter in debugfs, and its allocations.
std::vector<Check> debug_checks(const DebugFacts& facts, const std::string& bus_id,
                                const Check& debugfs);

// The driver's directory in sysfs, and the switch of usage accounting in it.
std::vector<Check> info_checks(const InfoFacts& facts, const std::string& bus_id);

Check hwmon_check(const NodeFact& directory, const std::string& bus_id);
Check proc_file_check(const NodeFact& file, const std::string& bus_id);

}  // namespace nimba::smi
