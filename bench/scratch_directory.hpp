// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <functional>

namespace nimba::bench {

// Makes a directory in `parent` and has `work` done with it in a child process. The directory is
// gone when this returns, however the child ended: also when it crashed, and when SIGHUP, SIGINT or
// SIGTERM came, which ends the child at once and then this process as it would have anyway.
// Returns the exit status of the work, 1 when it crashed. Throws std::system_error.
int run_in_scratch_directory(const std::filesystem::path& parent,
                             const std::function<int(const std::filesystem::path&)>& work);

}  // namespace nimba::bench
