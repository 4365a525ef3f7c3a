// SPDX-License-Identifier: MIT
// What "doctor" has to know of an adapter. Nothing is switched on or changed.
#pragma once

#include "tools/smi/adapter.hpp"
#include "tools/smi/doctor/facts.hpp"
#include "tools/smi/worker/session.hpp"

namespace nimba::smi {

// Loads the kernel-interface library of the adapter's chip and asks for the size of a device block,
// as the management library does. `drm_fd`: the adapter's DRM descriptor.
KernelInterfaceFacts kernel_interface_facts(Session& session, const Adapter& adapter, int drm_fd);

DebugFacts debug_facts(Session& session, const Adapter& adapter);
InfoFacts info_facts(Session& session, const Adapter& adapter);

// The hwmon directory, and the driver's file in /proc.
NodeFact hwmon_fact(Session& session, const Adapter& adapter);
NodeFact proc_fact(Session& session, const Adapter& adapter);

}  // namespace nimba::smi
