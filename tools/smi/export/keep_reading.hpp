// SPDX-License-Identifier: MIT
// Puts what a worker read of its adapter into the figures of a scrape.
#pragma once

#include "tools/smi/export/figures.hpp"

namespace nimba::smi::exporting {

void keep_reading(AdapterFigures& figures, ClockReading reading);
void keep_reading(AdapterFigures& figures, DvfsReading reading);
void keep_reading(AdapterFigures& figures, const SegmentReading& reading);
void keep_reading(AdapterFigures& figures, SensorReading reading);
void keep_reading(AdapterFigures& figures, MemoryReading reading);
void keep_reading(AdapterFigures& figures, LeakReading reading);
void keep_reading(AdapterFigures& figures, PageTableContents contents);

}  // namespace nimba::smi::exporting
