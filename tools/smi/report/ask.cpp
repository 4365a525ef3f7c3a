// SPDX-License-Identifier: MIT
#include "tools/smi/report/ask.hpp"

#include "tools/smi/alloc/command.hpp"
#include "tools/smi/doctor/command.hpp"
#include "tools/smi/dvfs/command.hpp"
#include "tools/smi/leaks/command.hpp"
#include "tools/smi/monitor/time_text.hpp"
#include "tools/smi/pagetable/command.hpp"
#include "tools/smi/process/stop_signals.hpp"
#include "tools/smi/report/bound.hpp"
#include "tools/smi/snapshot/collector.hpp"
#include "tools/smi/snapshot/json.hpp"
#include "tools/smi/snapshot/problems.hpp"
#include "tools/smi/tool_version.hpp"
#include "tools/smi/version/command.hpp"
#include "tools/smi/watch/rhythm.hpp"

#include <fmt/core.h>

#include <chrono>
#include <utility>

namespace nimba::smi::page {
namespace {

using Clock = std::chrono::steady_clock;

// A command, and what is chosen for it.
struct Question {
    const char* document;
    Report (*command)(const Options& options);
    void (*choose)(Options& options);
};

// What takes longest on a large machine comes last.
constexpr Question kQuestions[] = {
    {kVersion, version_command, [](Options& /*options*/) {}},
    {kDoctor, doctor_command, [](Options& /*options*/) {}},
    {kDvfs, dvfs_command, [](Options& options) { options.dvfs.action = DvfsAction::kGet; }},
    {kLeaks, leaks_command, [](Options& options) { options.leaks.count = 1; }},
    {kAllocations, alloc_command, [](Options& options) { options.top = 100; }},
    {kPageTables, pagetable_command, [](Options& options) { options.page_tables.map = true; }},
};

void take_samples(const Options& options, Content& content, std::vector<Problem>& problems,
                  const Progress& progress)
{
    const uint64_t samples = options.report.samples.value_or(1);
    const StopSignals stop{SignalEffect::kEndOfProcess};
    Collector collector{options, LostWorkers::kReplaced};
    Clock::time_point first;
    const Rhythm rhythm{options.report.interval.value_or(std::chrono::seconds{1}), samples};
    keep_rhythm(rhythm, stop, [&](uint64_t number) {
        progress(fmt::format("sample {} of {}", number, samples));
        const auto begin = Clock::now();
        first = number == 1 ? begin : first;
        const auto snapshot = collector.take(stop.descriptor());
        if (!snapshot) {
            return false;
        }
        if (number == 1) {
            content.time = utc_text(snapshot->time);
        }
        for (const Problem& problem : snapshot->problems) {
            add_unless_told(problems, problem);
        }
        content.add_sample(std::chrono::duration<double>(begin - first).count(),
                           bounded_overview(*snapshot));
        return true;
    });
}

}  // namespace

Document bounded_overview(const MachineSnapshot& snapshot)
{
    Document overview = snapshot_json(snapshot);
    bound(overview);
    return overview;
}

Documents ask_documents(const Options& options, std::vector<Problem>& problems,
                        const Progress& progress, std::optional<std::chrono::seconds> patience)
{
    const auto begin = Clock::now();
    Documents documents;
    for (const Question& question : kQuestions) {
        if (patience && Clock::now() - begin >= *patience) {
            break;
        }
        progress(question.document);
        Options chosen = options;
        chosen.json = true;
        question.choose(chosen);
        const Report answer = question.command(chosen);
        for (const Problem& problem : answer.problems) {
            add_unless_told(problems, problem);
        }
        if (!answer.output.empty()) {
            Document document = Document::parse(answer.output);
            bound(document);
            documents.emplace(question.document, std::move(document));
        }
    }
    return documents;
}

Content ask_machine(const Options& options, std::vector<Problem>& problems,
                    const Progress& progress)
{
    Content content;
    content.tool = kToolVersion;
    take_samples(options, content, problems, progress);
    content.documents = ask_documents(options, problems, progress);
    for (const Problem& problem : problems) {
        content.problems.push_back(problem.message);
    }
    return content;
}

}  // namespace nimba::smi::page
