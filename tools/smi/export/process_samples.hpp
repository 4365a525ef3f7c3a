// SPDX-License-Identifier: MIT
// The series that name processes.
#pragma once

#include "tools/smi/export/figures.hpp"
#include "tools/smi/export/process_cap.hpp"
#include "tools/smi/export/samples.hpp"

namespace nimba::smi::exporting {

// Adds the memory of each device, with the processes that hold it.
void add_processes(const AdapterFigures& adapter, const ProcessCap& cap, const Labels& labels,
                   Samples& samples);

// Adds the page tables of each process; those of all together when no series names a process.
void add_page_tables(const AdapterFigures& adapter, const ProcessCap& cap, const Labels& labels,
                     Samples& samples);

}  // namespace nimba::smi::exporting
