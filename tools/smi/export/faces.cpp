// SPDX-License-Identifier: MIT
#include "tools/smi/export/faces.hpp"

#include "tools/smi/text/json.hpp"

#include <prometheus/metric_family.h>
#include <prometheus/text_serializer.h>

#include <cmath>
#include <cstdint>
#include <utility>

namespace nimba::smi::exporting {
namespace {

prometheus::ClientMetric client_metric(const Sample& sample, bool is_counter)
{
    prometheus::ClientMetric metric;
    for (const Label& label : sample.labels) {
        metric.label.push_back({label.name, label.value});
    }
    (is_counter ? metric.counter.value : metric.gauge.value) = sample.value;
    return metric;
}

// Whole numbers without a point.
Document number_json(double value)
{
    constexpr double kExact = 9'007'199'254'740'992;  // all whole numbers up to it are
    return std::trunc(value) == value && std::abs(value) <= kExact
               ? Document(static_cast<int64_t>(value))
               : Document(value);
}

Document samples_json(const MetricSamples& metric)
{
    Document samples = Document::array();
    for (const Sample& sample : metric.samples) {
        Document labels = Document::object();
        for (const Label& label : sample.labels) {
            labels[label.name] = label.value;
        }
        samples.push_back({{"labels", std::move(labels)}, {"value", number_json(sample.value)}});
    }
    return samples;
}

}  // namespace

std::vector<prometheus::MetricFamily> families_of(std::span<const MetricSamples> metrics)
{
    std::vector<prometheus::MetricFamily> families;
    families.reserve(metrics.size());
    for (const auto& [row, samples] : metrics) {
        prometheus::MetricFamily& family = families.emplace_back();
        family.name = row->name;
        family.help = row->help;
        family.type =
            row->is_counter ? prometheus::MetricType::Counter : prometheus::MetricType::Gauge;
        for (const Sample& sample : samples) {
            family.metric.push_back(client_metric(sample, row->is_counter));
        }
    }
    return families;
}

std::string exposition_text(std::span<const MetricSamples> metrics)
{
    return prometheus::TextSerializer{}.Serialize(families_of(metrics));
}

std::string export_json(std::span<const MetricSamples> metrics, std::span<const Problem> problems)
{
    Document list = Document::array();
    for (const MetricSamples& metric : metrics) {
        list.push_back({{"name", metric.metric->name},
                        {"type", metric.metric->is_counter ? "counter" : "gauge"},
                        {"help", metric.metric->help},
                        {"samples", samples_json(metric)}});
    }
    return json_text({{"schema", "nimba-smi.export.1"},
                      {"metrics", std::move(list)},
                      {"errors", json_errors(problems)}});
}

}  // namespace nimba::smi::exporting
