// SPDX-License-Identifier: MIT
// What workers answer to "doctor".
#pragma once

#include "tools/smi/worker/message.hpp"
#include "tools/smi/worker/session.hpp"

#include <string_view>

namespace nimba::smi {

// The parts of the machine and of the user: arguments of the request "doctor-machine", which needs
// no library.
inline constexpr std::string_view kLibdrmPart = "libdrm";
inline constexpr std::string_view kDevicesPart = "devices";
inline constexpr std::string_view kDebugfsPart = "debugfs";
inline constexpr std::string_view kPsPart = "ps";
inline constexpr std::string_view kDmidecodePart = "dmidecode";
inline constexpr std::string_view kUserPart = "user";
inline constexpr std::string_view kPreferencesPart = "preferences";

Message answer_doctor_machine(Session& session, std::string_view part);

// The parts of the worker's own adapter: arguments of the request "doctor-adapter".
inline constexpr std::string_view kKernelInterfacePart = "kernel-interface";
inline constexpr std::string_view kDebugPart = "debug";
inline constexpr std::string_view kInfoPart = "info";
inline constexpr std::string_view kHwmonPart = "hwmon";
inline constexpr std::string_view kProcPart = "proc";

Message answer_doctor_adapter(Session& session, std::string_view part);

}  // namespace nimba::smi
