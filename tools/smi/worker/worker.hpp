// SPDX-License-Identifier: MIT
// The tool as its own worker: the process that loads the library and talks to the driver.
#pragma once

namespace nimba::smi {

// The descriptor on which a worker finds its end of the channel.
inline constexpr int kWorkerChannel = 3;

// The descriptor of the memory in which it tells how far discovery came.
inline constexpr int kWorkerProgress = 4;

// The descriptor of the memory for what it writes on standard error.
inline constexpr int kWorkerComplaints = 5;

// Serves requests until the tool hangs up. `arguments` are the command line's, from "--worker" on.
// Returns the exit status of the process.
int run_worker(int count, char** arguments);

}  // namespace nimba::smi
