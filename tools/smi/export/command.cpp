// SPDX-License-Identifier: MIT
#include "tools/smi/export/command.hpp"

#include "tools/smi/export/faces.hpp"
#include "tools/smi/export/machine_samples.hpp"
#include "tools/smi/export/machine_scraper.hpp"
#include "tools/smi/export/problem_lines.hpp"
#include "tools/smi/export/server.hpp"
#include "tools/smi/export/shared_work.hpp"
#include "tools/smi/export/task_thread.hpp"
#include "tools/smi/process/held_signal.hpp"
#include "tools/smi/process/stop_signals.hpp"
#include "tools/smi/text/atomic_file.hpp"
#include "tools/smi/text/output.hpp"
#include "tools/smi/watch/rhythm.hpp"

#include <poll.h>

#include <fmt/core.h>
#include <prometheus/metric_family.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <exception>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

namespace nimba::smi {
namespace {

using namespace exporting;

std::vector<Problem> problems_of(const MachineFigures& figures)
{
    std::vector<Problem> problems = figures.problems;
    for (const AdapterFigures& adapter : figures.adapters) {
        problems.insert(problems.end(), adapter.problems.begin(), adapter.problems.end());
    }
    return problems;
}

std::vector<Problem> denied_of(const MachineFigures& figures)
{
    std::vector<Problem> denied;
    for (const AdapterFigures& adapter : figures.adapters) {
        denied.insert(denied.end(), adapter.denied.begin(), adapter.denied.end());
    }
    return denied;
}

struct Scrape {
    std::vector<MetricSamples> metrics;
    std::vector<Problem> problems;
    std::vector<Problem> denied;  // what was left out, as the user wants
};

// The machine, as its faces see it.
class Source final {
  public:
    Source(const Options& options, const StopSignals& stop)
        : machine_{options},
          cap_{options.exporting.no_processes, options.exporting.max_processes},
          stop_{stop}
    {
    }

    Scrape scrape()
    {
        const MachineFigures figures = machine_.scrape(stop_.descriptor());
        return {samples_of(figures, cap_), problems_of(figures), denied_of(figures)};
    }

    // The user wants to end; the last scrape may be incomplete.
    [[nodiscard]] bool is_stopping() const
    {
        return stop_.wait_until(std::chrono::steady_clock::now());
    }

  private:
    MachineScraper machine_;
    ProcessCap cap_;
    const StopSignals& stop_;
};

// Problems as lines of standard error, when they come up.
class Teller final {
  public:
    void tell(std::span<const Problem> problems)
    {
        for (const Problem& problem : lines_.news(problems)) {
            print_error_line(problem.message);
        }
    }

    // What is left out, once.
    void tell_denied(std::span<const Problem> denied)
    {
        for (const Problem& problem : lines_.never_told(denied)) {
            print_error_line(problem.message);
        }
    }

  private:
    ProblemLines lines_;
};

// What the HTTP face serves. Nothing that goes wrong leaves it: it would end the process.
class ServedSource final : public prometheus::Collectable {
  public:
    ServedSource(const Options& options, const StopSignals& stop) : source_{options, stop} {}

    // Those that come while a scrape is under way share the next one, as many as they are.
    [[nodiscard]] std::vector<prometheus::MetricFamily> Collect() const override
    {
        try {
            return *scrapes_.get(arrival_of_request());
        } catch (const std::exception&) {
            return {};  // no room
        }
    }

  private:
    using Families = std::vector<prometheus::MetricFamily>;

    // In the only thread that scrapes: the stacks of the server's threads have room for a request,
    // not for what a worker answers.
    std::shared_ptr<const Families> scrape()
    {
        auto families = std::make_shared<Families>();
        try {
            thread_.start([&] { *families = collect(); }).get();
        } catch (const std::exception& exception) {
            teller_.tell({{{ExitStatus::kFailed, std::nullopt, std::nullopt,
                            fmt::format("a scrape failed: {}", exception.what())}}});
        }
        return families;
    }

    // Nothing once the user wants to end: half of a scrape would be taken for the machine.
    Families collect()
    {
        if (source_.is_stopping()) {
            return {};
        }
        const Scrape scrape = source_.scrape();
        if (source_.is_stopping()) {
            return {};
        }
        teller_.tell(scrape.problems);
        teller_.tell_denied(scrape.denied);
        return families_of(scrape.metrics);
    }

    Source source_;
    Teller teller_;
    TaskThread thread_;
    // A scrape changes what is known of the machine, which to prometheus-cpp is no change.
    mutable SharedWork<std::shared_ptr<const Families>> scrapes_{[this] { return scrape(); }};
};

Report serve_metrics(const Options& options, const ListenAddress& address)
{
    const StopSignals stop{SignalEffect::kEndOfRun};
    auto served = serve(address, std::make_shared<ServedSource>(options, stop));
    if (auto* const problem = std::get_if<Problem>(&served)) {
        return {"", {std::move(*problem)}};
    }
    ListenAddress bound = address;
    bound.port = std::get<Server>(served).port();
    print_error_line(fmt::format("serving http://{}/metrics", text_of(bound)));
    pollfd signals{stop.descriptor(), POLLIN, 0};
    while (::poll(&signals, 1, -1) < 0 && errno == EINTR) {
    }
    return {};
}

Problem file_problem(const std::string& path, int error)
{
    return {error == EACCES || error == EPERM ? ExitStatus::kNoPermission : ExitStatus::kFailed,
            std::nullopt, std::nullopt,
            fmt::format("cannot write {}: {}", path, std::strerror(error))};
}

// Puts a scrape into the file. The problems are those of the scrape and of writing.
std::vector<Problem> write_scrape(const Scrape& scrape, const std::string& path)
{
    std::vector<Problem> problems = scrape.problems;
    if (const int error = write_file(path, exposition_text(scrape.metrics)); error != 0) {
        problems.push_back(file_problem(path, error));
    }
    return problems;
}

Report write_once(const Options& options, const std::string& path)
{
    const StopSignals stop{SignalEffect::kEndOfProcess};
    Source source{options, stop};
    const Scrape scrape = source.scrape();
    Teller{}.tell_denied(scrape.denied);
    return {"", source.is_stopping() ? scrape.problems : write_scrape(scrape, path)};
}

Report keep_file(const Options& options, const std::string& path,
                 std::chrono::milliseconds interval)
{
    const StopSignals stop{SignalEffect::kEndOfRun};
    Source source{options, stop};
    Teller teller;
    std::vector<Problem> last;
    keep_rhythm({interval, std::nullopt}, stop, [&](uint64_t) {
        Scrape scrape = source.scrape();
        if (source.is_stopping()) {
            return false;  // it may be incomplete
        }
        last = write_scrape(scrape, path);
        teller.tell(last);
        teller.tell_denied(scrape.denied);
        return true;
    });
    return {"", {}, std::move(last)};
}

Report print_once(const Options& options)
{
    const StopSignals stop{SignalEffect::kEndOfProcess};
    Source source{options, stop};
    Scrape scrape = source.scrape();
    Teller{}.tell_denied(scrape.denied);
    return {options.json ? export_json(scrape.metrics, scrape.problems)
                         : exposition_text(scrape.metrics),
            std::move(scrape.problems)};
}

}  // namespace

Report export_command(const Options& options)
{
    // Who stops reading, or a worker that dies, must not end the exporter.
    const HeldSignal pipe{SIGPIPE};
    if (options.exporting.once) {
        return print_once(options);
    }
    const ExportOptions& exporting = options.exporting;
    if (exporting.textfile) {
        return exporting.interval ? keep_file(options, *exporting.textfile, *exporting.interval)
                                  : write_once(options, *exporting.textfile);
    }
    return serve_metrics(options,
                         exporting.listen.value_or(ListenAddress{"127.0.0.1", kDefaultPort}));
}

}  // namespace nimba::smi
