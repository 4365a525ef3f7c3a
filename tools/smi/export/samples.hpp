// SPDX-License-Identifier: MIT
// The samples of a scrape, by metric.
#pragma once

#include "tools/smi/export/metric.hpp"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace nimba::smi::exporting {

struct Label {
    std::string name;
    std::string value;

    bool operator==(const Label&) const = default;
};
using Labels = std::vector<Label>;

struct Sample {
    Labels labels;
    double value = 0;

    bool operator==(const Sample&) const = default;
};

struct MetricSamples {
    const MetricRow* metric = nullptr;
    std::vector<Sample> samples;
};

// What a family of series is made of.
class Samples final {
  public:
    Samples();

    // Labels without a text are left out, and bytes that are no UTF-8 replaced.
    void add(Metric metric, Labels labels, double value);

    // Adds a sample if there is a value.
    template <typename Number>
    void add(Metric metric, Labels labels, const std::optional<Number>& value)
    {
        if (value) {
            add(metric, std::move(labels), static_cast<double>(*value));
        }
    }

    // The metrics that have samples, in the order of metric_table.
    [[nodiscard]] std::vector<MetricSamples> take() &&;

  private:
    std::vector<MetricSamples> metrics_;
};

// Both together.
Labels joined(const Labels& first, Labels second);

}  // namespace nimba::smi::exporting
