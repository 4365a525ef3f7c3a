// SPDX-License-Identifier: MIT
#include "tools/smi/export/samples.hpp"

#include "tools/smi/text/printable.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

namespace nimba::smi::exporting {

Samples::Samples()
{
    for (const MetricRow& row : metric_table()) {
        metrics_.push_back({&row, {}});
    }
}

void Samples::add(Metric metric, Labels labels, double value)
{
    std::erase_if(labels, [](const Label& label) { return label.value.empty(); });
    for (Label& label : labels) {
        label.value = printable(label.value);
    }
    metrics_[static_cast<std::size_t>(metric)].samples.push_back({std::move(labels), value});
}

std::vector<MetricSamples> Samples::take() &&
{
    std::erase_if(metrics_, [](const MetricSamples& metric) { return metric.samples.empty(); });
    return std::move(metrics_);
}

Labels joined(const Labels& first, Labels second)
{
    second.insert(second.begin(), first.begin(), first.end());
    return second;
}

}  // namespace nimba::smi::exporting
