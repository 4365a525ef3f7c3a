// SPDX-License-Identifier: MIT
#include "tools/smi/capture/command_options.hpp"

#include "tools/smi/option_value.hpp"
#include "tools/smi/sample_options.hpp"

#include <CLI/CLI.hpp>

#include <chrono>
#include <cstdint>

namespace nimba::smi {

void add_capture_options(CLI::App& command, Options& options)
{
    CaptureOptions& capture = options.capture;
    command.add_option("FILE", capture.file, "The archive to write, such as machine.tar.zst")
        ->required();
    add_sample_options(
        command, "Take so many samples (default: 1)",
        [&capture](uint64_t samples) { capture.samples = samples; },
        [&capture](std::chrono::milliseconds interval) { capture.interval = interval; });
    add_flag(command, "--redact", capture.redact,
             "Put stand-ins in the place of process names, paths and preferences");
}

}  // namespace nimba::smi
