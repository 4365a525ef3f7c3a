// SPDX-License-Identifier: MIT
// The faces of a scrape.
#pragma once

#include "tools/smi/exit_status.hpp"
#include "tools/smi/export/samples.hpp"

#include <span>
#include <string>
#include <vector>

namespace prometheus {
struct MetricFamily;
}

namespace nimba::smi::exporting {

// What prometheus-cpp serves.
std::vector<prometheus::MetricFamily> families_of(std::span<const MetricSamples> metrics);

// The same as text in Prometheus's exposition format.
std::string exposition_text(std::span<const MetricSamples> metrics);

// As a document.
std::string export_json(std::span<const MetricSamples> metrics, std::span<const Problem> problems);

}  // namespace nimba::smi::exporting
