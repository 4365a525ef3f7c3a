// SPDX-License-Identifier: MIT
// What a capture tells of the machine once, and the workers that tell it.
#pragma once

#include "tools/archive/capture.hpp"
#include "tools/smi/capture/sampler.hpp"
#include "tools/smi/exit_status.hpp"
#include "tools/smi/options.hpp"
#include "tools/smi/process/worker_process.hpp"
#include "tools/smi/worker/payload.hpp"

#include <list>
#include <optional>
#include <string>
#include <vector>

namespace nimba::smi {

// A worker that has made an adapter current, with usage accounting on.
struct CaptureWorker {
    SlotIdentity identity;
    WorkerProcess process;
};

struct Identity {
    archive::Drm drm;
    std::optional<archive::Library> library;
    std::vector<archive::Adapter> adapters;
    std::optional<std::string> dmidecode;
    std::vector<NodeOwner> owners;
    std::list<CaptureWorker> workers;
    std::vector<Problem> problems;
};

// Asks for everything; what does not answer is a problem. `stop`: see Patience.
Identity read_identity(const Options& options, int stop);

// What the kernel-interface libraries tell now. A worker that is lost is one no more.
std::vector<archive::Counters> read_capture_counters(const Options& options, int stop,
                                                     Identity& identity);

}  // namespace nimba::smi
