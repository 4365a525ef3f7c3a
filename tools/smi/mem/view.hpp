// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/mem/segments.hpp"
#include "tools/smi/monitor/view.hpp"

#include <string>

namespace nimba::smi {

// How the segments look: a row for each, and one for all of an adapter.
MonitorView<SegmentTable> segments_view();

// A bar of 20 characters, of which "#" are used: none only if nothing is, all only if all is. Empty
// when it cannot be told.
std::string bar_text(const SegmentUse& use);

}  // namespace nimba::smi
