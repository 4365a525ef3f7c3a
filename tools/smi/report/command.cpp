// SPDX-License-Identifier: MIT
#include "tools/smi/report/command.hpp"

#include "tools/archive/archive_error.hpp"
#include "tools/archive/load.hpp"
#include "tools/smi/leaks/status_line.hpp"
#include "tools/smi/report/ask.hpp"
#include "tools/smi/report/captured.hpp"
#include "tools/smi/report/page.hpp"
#include "tools/smi/report/value.hpp"
#include "tools/smi/text/atomic_file.hpp"
#include "tools/smi/text/size.hpp"

#include <unistd.h>

#include <fmt/core.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace nimba::smi {
namespace {

using namespace page;

// Page tables of a machine with adapters may be another GPU's: then there is nothing to show, and
// nothing wrong.
void excuse_page_tables(const Content& content, std::vector<Problem>& problems)
{
    if (adapters_of(content.overview).empty()) {
        return;
    }
    for (Problem& problem : problems) {
        if (problem.status == ExitStatus::kNoAdapter && !problem.adapter) {
            problem.status = ExitStatus::kOk;
        }
    }
}

Content ask(const Options& options, std::vector<Problem>& problems)
{
    if (options.report.capture) {
        return captured_content(archive::load_capture(*options.report.capture),
                                *options.report.capture);
    }
    StatusLine line{STDERR_FILENO};
    const bool shown = line.is_visible() && !options.verbose;
    Content content = ask_machine(options, problems, [&](const std::string& what) {
        if (shown) {
            line.show(what);
        }
    });
    excuse_page_tables(content, problems);
    return content;
}

std::string counted(std::size_t count, const char* what)
{
    return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

std::string report_json(const Options& options, const Content& content, std::size_t bytes,
                        const std::vector<Problem>& problems)
{
    return json_text({{"schema", "nimba-smi.report.1"},
                      {"file", options.report.file},
                      {"capture", or_null(options.report.capture)},
                      {"time", content.time},
                      {"adapters", adapters_of(content.overview).size()},
                      {"samples", content.samples.size()},
                      {"bytes", bytes},
                      {"errors", json_errors(problems)}});
}

// Whether both names are of one file.
bool is_same_file(const std::string& one, const std::string& other)
{
    struct stat status {};
    struct stat other_status {};
    return ::stat(one.c_str(), &status) == 0 && ::stat(other.c_str(), &other_status) == 0 &&
           status.st_dev == other_status.st_dev && status.st_ino == other_status.st_ino;
}

}  // namespace

Report report_command(const Options& options)
{
    Report report;
    const auto& capture = options.report.capture;
    if (capture && options.report.file != "-" && is_same_file(*capture, options.report.file)) {
        report.problems.push_back(
            {ExitStatus::kFailed, std::nullopt, std::nullopt,
             fmt::format("cannot write {}: it is the capture itself", options.report.file)});
        return report;
    }
    try {
        const Content content = ask(options, report.problems);
        std::string text = page_html(content);
        if (options.report.file == "-") {
            report.output = std::move(text);
            return report;
        }
        if (const int error = write_file(options.report.file, text); error != 0) {
            report.problems.push_back(
                {ExitStatus::kFailed, std::nullopt, std::nullopt,
                 fmt::format("cannot write {}: {}", options.report.file, std::strerror(error))});
            return report;
        }
        report.output =
            options.json
                ? report_json(options, content, text.size(), report.problems)
                : fmt::format("{}: {}, {}, {}\n", options.report.file,
                              counted(adapters_of(content.overview).size(), "adapter"),
                              counted(content.samples.size(), "sample"), size_text(text.size()));
    } catch (const archive::ArchiveError& error) {
        report.problems.push_back({ExitStatus::kFailed, std::nullopt, std::nullopt,
                                   fmt::format("{}: {}", *options.report.capture, error.what())});
    }
    return report;
}

}  // namespace nimba::smi
