// SPDX-License-Identifier: MIT
#include "tools/smi/export/machine_samples.hpp"

#include "tools/smi/export/adapter_samples.hpp"
#include "tools/smi/export/process_samples.hpp"
#include "tools/smi/version/render.hpp"

#include <utility>

namespace nimba::smi::exporting {
namespace {

void add_library(const LibraryVersion& library, Samples& samples)
{
    samples.add(Metric::kLibraryInfo,
                {{"path", library.path},
                 {"version", library.package_version.value_or("")},
                 {"interface_version", std::to_string(library.interface_version)},
                 {"client_version", std::to_string(library.client_version)},
                 {"match", std::string{match_meaning(library.match_code).word}}},
                1);
}

void add_runs(const std::vector<CollectorRun>& runs, const Labels& adapter, Samples& samples)
{
    for (const CollectorRun& run : runs) {
        Labels labels{{"collector", std::string{run.collector}}};
        labels.insert(labels.end(), adapter.begin(), adapter.end());
        samples.add(Metric::kCollectorSuccess, labels, run.success ? 1 : 0);
        if (run.duration) {
            samples.add(Metric::kCollectorDuration, std::move(labels), run.duration->count());
        }
    }
}

}  // namespace

std::vector<MetricSamples> samples_of(const MachineFigures& figures, const ProcessCap& cap)
{
    Samples samples;
    samples.add(Metric::kAdapters, {}, figures.adapters_found);
    samples.add(Metric::kExporterInfo, {{"version", figures.tool_version}}, 1);
    if (figures.library) {
        add_library(*figures.library, samples);
    }
    add_runs(figures.runs, {}, samples);
    samples.add(Metric::kWorkersReplaced, {}, static_cast<double>(figures.workers_replaced));
    for (const AdapterFigures& adapter : figures.adapters) {
        const Labels labels = adapter_labels(adapter.state.adapter);
        add_adapter(adapter, labels, samples);
        add_processes(adapter, cap, labels, samples);
        add_page_tables(adapter, cap, labels, samples);
        add_runs(adapter.runs, labels, samples);
        samples.add(Metric::kWorkersReplaced, labels,
                    static_cast<double>(adapter.workers_replaced));
    }
    samples.add(Metric::kScrapeDuration, {}, figures.duration.count());
    return std::move(samples).take();
}

}  // namespace nimba::smi::exporting
