// SPDX-License-Identifier: MIT
#include "tools/smi/capture/command.hpp"

#include "tools/archive/archive_error.hpp"
#include "tools/smi/capture/take.hpp"
#include "tools/smi/text/json.hpp"

#include <fmt/core.h>

#include <utility>

namespace nimba::smi {
namespace {

std::string counted(std::size_t count, const char* what)
{
    return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

std::string capture_text(const Options& options, const CaptureOutcome& outcome)
{
    return fmt::format("{}: {}, {}, {} not read{}\n", options.capture.file,
                       counted(outcome.manifest.samples.size(), "sample"),
                       counted(outcome.nodes, "node"), outcome.manifest.errors.size(),
                       outcome.manifest.redacted ? ", redacted" : "");
}

std::string capture_json(const Options& options, const CaptureOutcome& outcome)
{
    Document adapters = Document::array();
    for (const archive::Adapter& adapter : outcome.manifest.adapters) {
        adapters.push_back(
            {{"slot", adapter.slot}, {"bus_id", adapter.bus_id}, {"name", or_null(adapter.name)}});
    }
    Document unread = Document::array();
    for (const archive::ReadError& error : outcome.manifest.errors) {
        unread.push_back({{"sample", error.sample}, {"path", error.path}, {"error", error.error}});
    }
    return json_text({{"schema", "nimba-smi.capture.1"},
                      {"file", options.capture.file},
                      {"time", outcome.manifest.time},
                      {"redacted", outcome.manifest.redacted},
                      {"samples", outcome.manifest.samples.size()},
                      {"nodes", outcome.nodes},
                      {"adapters", std::move(adapters)},
                      {"unread", std::move(unread)},
                      {"errors", json_errors(outcome.problems)}});
}

}  // namespace

Report capture_command(const Options& options)
{
    try {
        CaptureOutcome outcome = take_capture(options);
        return {options.json ? capture_json(options, outcome) : capture_text(options, outcome),
                std::move(outcome.problems)};
    } catch (const archive::ArchiveError& error) {
        return {"",
                {{ExitStatus::kFailed, std::nullopt, std::nullopt,
                  fmt::format("{}: {}", options.capture.file, error.what())}}};
    }
}

}  // namespace nimba::smi
