// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/export/figures.hpp"
#include "tools/smi/export/samples.hpp"

namespace nimba::smi::exporting {

// The labels that all series of an adapter have.
Labels adapter_labels(const SlotIdentity& adapter);

// Whether the driver gave any figure.
bool is_up(const AdapterFigures& adapter);

// Adds what is known of an adapter, but for its processes.
void add_adapter(const AdapterFigures& adapter, const Labels& labels, Samples& samples);

}  // namespace nimba::smi::exporting
