// SPDX-License-Identifier: MIT
#include "tools/smi/version/command.hpp"

#include "nimba_mgmt_interface.h"
#include "tools/smi/process/ask.hpp"
#include "tools/smi/process/diagnosis.hpp"
#include "tools/smi/tool_version.hpp"
#include "tools/smi/version/render.hpp"
#include "tools/smi/worker/library.hpp"
#include "tools/smi/worker/requests.hpp"

namespace nimba::smi {
namespace {

VersionSnapshot take_snapshot(const Options& options)
{
    VersionSnapshot snapshot;
    snapshot.tool_version = kToolVersion;
    WorkerProcess worker{{options.library, options.verbose, std::nullopt}};
    const Reply reply = ask_all({&worker, 1}, kVersionRequest, {options.timeout}).front();
    snapshot.library = accept<LibraryVersion>({"library", std::nullopt}, reply, snapshot.problems);
    if (snapshot.library && snapshot.library->match_code == NIMBA_VERSION_MAJOR_MISMATCH) {
        snapshot.problems.push_back({ExitStatus::kNoLibrary, std::nullopt,
                                     "get_interface_version_ext1",
                                     major_mismatch_message(snapshot.library->path)});
    }
    return snapshot;
}

}  // namespace

Report version_command(const Options& options)
{
    VersionSnapshot snapshot = take_snapshot(options);
    return {options.json ? version_json(snapshot) : version_text(snapshot),
            std::move(snapshot.problems)};
}

}  // namespace nimba::smi
