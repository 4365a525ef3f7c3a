// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/export/figures.hpp"
#include "tools/smi/export/process_cap.hpp"
#include "tools/smi/export/samples.hpp"

#include <vector>

namespace nimba::smi::exporting {

// The samples of all metrics that have any.
std::vector<MetricSamples> samples_of(const MachineFigures& figures, const ProcessCap& cap);

}  // namespace nimba::smi::exporting
